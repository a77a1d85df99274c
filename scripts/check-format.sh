#!/usr/bin/env bash
# Checks that the C++ sources follow .clang-format; with --fix, formats them instead.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"
command -v clang-format >/dev/null || { echo "clang-format is missing (Debian: clang-format)" >&2; exit 2; }
mapfile -t files < <(git ls-files '*.cpp' '*.h')
if [ "${1:-}" = --fix ]; then
  clang-format -i "${files[@]}"
  exit 0
fi
differ=()
for f in "${files[@]}"; do
  clang-format --dry-run -Werror "$f" >/dev/null 2>&1 || differ+=("$f")
done
if [ ${#differ[@]} -gt 0 ]; then
  printf 'not formatted (scripts/check-format.sh --fix): %s\n' "${differ[@]}" >&2
  exit 1
fi
