#!/usr/bin/env bash
# Builds Orvel Thumbnails (installing what it needs) and runs every test twice: in a plain
# warnings-as-errors build, then under AddressSanitizer (leaks included) and UndefinedBehaviorSanitizer.
# Set ORVEL_SKIP_SANITIZERS=1 to run the plain build only.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc)

"$top/scripts/setup.sh" "$top/build-test" -DORVEL_WERROR=ON
"$top/scripts/check-format.sh"
(cd "$top/build-test" && ctest --output-on-failure -j"$jobs")

if [ "${ORVEL_SKIP_SANITIZERS:-0}" != 1 ]; then
  # Leaks are errors too; scripts/lsan.supp names the libraries' own, which are not ours to fix.
  # Allocations get whole stacks (slower), so that a suppression can name a function of a library
  # built without frame pointers, such as Qt's.
  export ASAN_OPTIONS="halt_on_error=1:detect_leaks=1:abort_on_error=1:fast_unwind_on_malloc=0"
  export LSAN_OPTIONS="suppressions=$top/scripts/lsan.supp:print_suppressions=0"
  export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:suppressions=$top/scripts/ubsan.supp"
  ORVEL_BUILD_TYPE=Debug "$top/scripts/setup.sh" "$top/build-asan" -DORVEL_WERROR=ON -DORVEL_SANITIZE=ON
  (cd "$top/build-asan" && ctest --output-on-failure -j"$jobs")
fi
