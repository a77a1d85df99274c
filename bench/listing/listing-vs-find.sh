#!/usr/bin/env bash
# The file manager's deep listing against `find DIR` on a tree made here. Both print every path,
# one a line, to /dev/null. Prints the median wall time and CPU time (user + sys) of each and the
# ratios (ours / find's; below 1 is faster), and checks that both list the same paths.
# Usage: bench/listing/listing-vs-find.sh [--entries N] [--runs N] [--repeat N]
#   --entries N  files and folders in the tree (default 100000)
#   --runs N     measurements per command, the median is kept (default 5)
#   --repeat N   listings per measurement, as /usr/bin/time counts in hundredths (default 10)
set -euo pipefail
top=$(cd "$(dirname "$0")/../.." && pwd)
entries=100000 runs=5 repeat=10
while [ $# -gt 0 ]; do
  case $1 in
    --entries) entries=$2; shift 2 ;;
    --runs) runs=$2; shift 2 ;;
    --repeat) repeat=$2; shift 2 ;;
    *) echo "unknown option $1" >&2; exit 2 ;;
  esac
done
bench=${LISTING_BENCH:-$top/build/bench/listing/listing_bench}
[ -x "$bench" ] || { echo "build the listing_bench target first (or set LISTING_BENCH)" >&2; exit 2; }
[ -x /usr/bin/time ] || { echo "needs /usr/bin/time (Debian's time package)" >&2; exit 2; }
command -v python3 >/dev/null || { echo "needs python3" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Three levels of ten folders each (1,110 folders), the rest files spread over the deepest ones,
# with a few dot files and links (to the folder above, a loop; and broken ones) as real trees have.
python3 - "$work/tree" "$entries" <<'PY'
import os, sys
root, entries = sys.argv[1], int(sys.argv[2])
leaves = []
for a in range(10):
    for b in range(10):
        for c in range(10):
            d = os.path.join(root, "a%d" % a, "b%d" % b, "c%d" % c)
            os.makedirs(d)
            leaves.append(d)
files = entries - 1110
for i in range(files):
    d = leaves[i % len(leaves)]
    name = (".hidden%06d" if i % 97 == 0 else "file%06d.txt") % i
    if i % 1000 == 1:
        os.symlink("..", os.path.join(d, "up%06d" % i))
    elif i % 1000 == 2:
        os.symlink("gone", os.path.join(d, "broken%06d" % i))
    else:
        open(os.path.join(d, name), "wb").close()
PY

median() { sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
# One run: the command repeated --repeat times in one shell; "wall cpu" of one listing in seconds,
# cpu being user + sys.
measure() {
  /usr/bin/time -f '%e %U %S' -o "$work/time" sh -c 'n=$1; shift; while [ "$n" -gt 0 ]; do "$@"; n=$((n - 1)); done' \
    sh "$repeat" "$@" >/dev/null
  awk -v n="$repeat" '{print $1 / n, ($2 + $3) / n}' "$work/time"
}

# The same paths in the same order (both walk pre-order in the order the folders list), but for
# the broken links, which find lists and ours leaves out as entries that do not exist.
"$bench" "$work/tree" >"$work/ours.txt"
find "$work/tree" >"$work/find.txt"
if ! diff -q "$work/ours.txt" <(grep -v '/broken[0-9]*$' "$work/find.txt") >/dev/null; then
  echo "the listings differ" >&2; exit 1
fi

ours_wall=() ours_cpu=() find_wall=() find_cpu=()
for r in $(seq "$runs"); do
  read -r w c < <(measure find "$work/tree"); find_wall+=("$w"); find_cpu+=("$c")
  read -r w c < <(measure "$bench" "$work/tree"); ours_wall+=("$w"); ours_cpu+=("$c")
done
m() { printf '%s\n' "$@" | median; }
ow=$(m "${ours_wall[@]}") oc=$(m "${ours_cpu[@]}") fw=$(m "${find_wall[@]}") fc=$(m "${find_cpu[@]}")
echo "tree: $(wc -l <"$work/find.txt") entries (find), $(wc -l <"$work/ours.txt") listed by ours; median of $runs runs of $repeat listings, warm cache"
printf 'wall  ours %6.3f s   find %6.3f s   ratio %.2f\n' "$ow" "$fw" "$(awk -v o="$ow" -v t="$fw" 'BEGIN { print (t > 0 ? o / t : 0) }')"
printf 'cpu   ours %6.3f s   find %6.3f s   ratio %.2f\n' "$oc" "$fc" "$(awk -v o="$oc" -v t="$fc" 'BEGIN { print (t > 0 ? o / t : 0) }')"
