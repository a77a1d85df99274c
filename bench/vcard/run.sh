#!/usr/bin/env bash
# Makes a file of vCards (a realistic mix, from a fixed seed), then reads it with vcard_bench (our
# reader plus each person's metadata) and with Python's vobject doing the same, in one run, and
# prints the CPU seconds of each and the ratio.
# Usage: bench/vcard/run.sh [RUNS]      (median of RUNS reads per side, default 5; CARDS=N cards)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/../.." && pwd)
runs=${1:-5}
bench=${VCARD_BENCH:-$top/build/bench/vcard/vcard_bench}
[ -x "$bench" ] || { echo "no $bench: cmake --build build --target vcard_bench (or set VCARD_BENCH)" >&2; exit 2; }
# Debian's python3-vobject installs for the system's Python, whatever python3 is first on PATH.
/usr/bin/python3 -c 'import vobject' 2>/dev/null || { echo "needs python3-vobject (scripts/setup.sh)" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$bench" --write "$work/cards.vcf" "${CARDS:-10000}"
echo "file: ${CARDS:-10000} cards, $(stat -c %s "$work/cards.vcf") bytes" >&2

ours=$("$bench" "$work/cards.vcf" "$runs")
theirs=$(/usr/bin/python3 "$here/vobject_read.py" "$work/cards.vcf" "$runs")
printf 'orvel    %s\nvobject  %s\n' "$ours" "$theirs"
awk -v a="$ours" -v b="$theirs" 'BEGIN {
    n = split(a, x, " "); m = split(b, y, " ")
    ratio = y[m] / x[n]
    printf "vobject / orvel: %.1f x  (target 20 x: %s)\n", ratio, (ratio >= 20 ? "PASS" : "MISS")
}'
