#!/usr/bin/env bash
# Mirroring against rsync -a, zipping against zip -r -q and unzipping against unzip -q, on corpora
# made here. Prints each pair's median wall time and median CPU time (user + sys) and their ratios
# (ours / tool's; below 1 is faster).
# Usage: bench/archives/archives-vs-tools.sh [--files N] [--zip-mib N] [--runs N] [--mirror-only]
#   --files N    files in the mirrored tree (default 10000; 10 % of them change between runs)
#   --zip-mib N  size of the mixed corpus that is zipped, in MiB (default 1024)
#   --runs N     measurements per command, the median is kept (default 3)
#   --mirror-only  measure the mirroring alone (no zip corpus is made)
set -euo pipefail
top=$(cd "$(dirname "$0")/../.." && pwd)
files=10000 zipmib=1024 runs=3 mirroronly=0
while [ $# -gt 0 ]; do
  case $1 in
    --files) files=$2; shift 2 ;;
    --zip-mib) zipmib=$2; shift 2 ;;
    --runs) runs=$2; shift 2 ;;
    --mirror-only) mirroronly=1; zipmib=0; shift ;;
    *) echo "unknown option $1" >&2; exit 2 ;;
  esac
done
bench=${ARCHIVES_BENCH:-$top/build/bench/archives/archives_bench}
[ -x "$bench" ] || { echo "build the archives_bench target first (or set ARCHIVES_BENCH)" >&2; exit 2; }
[ -x /usr/bin/time ] || { echo "needs /usr/bin/time (Debian's time package)" >&2; exit 2; }
for tool in rsync zip unzip python3; do command -v $tool >/dev/null || { echo "needs $tool" >&2; exit 2; }; done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

python3 - "$work" "$files" "$zipmib" <<'PY'
import os, random, sys
work, files, zipmib = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
rnd = random.Random(7)
words = [bytes(rnd.choice(b"abcdefghijklmnopqrstuvwxyz") for _ in range(rnd.randint(2, 9))) for _ in range(2000)]
# Text is cut from one block of random words, so that making the corpus takes seconds.
block = b" ".join(rnd.choice(words) for _ in range(1 << 20))
def text(n):
    out = bytearray()
    while len(out) < n:
        start = rnd.randrange(len(block) // 2)
        out += block[start:start + n - len(out)]
    return bytes(out)
# The mirrored tree: 100 folders of small files, 1 to 16 KiB of text.
for i in range(files):
    d = os.path.join(work, "tree", "d%03d" % (i % 100))
    os.makedirs(d, exist_ok=True)
    with open(os.path.join(d, "f%05d.txt" % i), "wb") as f:
        f.write(text(rnd.randint(1024, 16384)))
# The zipped corpus: text, incompressible bytes and a few large files, about zipmib MiB.
total, i = 0, 0
while total < zipmib << 20:
    d = os.path.join(work, "mixed", "m%02d" % (i % 40))
    os.makedirs(d, exist_ok=True)
    kind = i % 10
    n = rnd.randint(8 << 20, 24 << 20) if kind == 0 else rnd.randint(4 << 10, 1 << 20)
    data = os.urandom(n) if kind in (1, 2, 3) else text(n)
    with open(os.path.join(d, "x%05d.%s" % (i, "bin" if kind in (1, 2, 3) else "txt")), "wb") as f:
        f.write(data)
    total += n
    i += 1
PY

median() { sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
# One run: "wall cpu" in seconds, cpu being user + sys of the command and its children.
timed() { /usr/bin/time -f '%e %U %S' -o "$work/time" "$@" >/dev/null; awk '{print $1, $2 + $3}' "$work/time"; }

# Each run: a fresh mirror, 10 % of the source touched with new contents, then the update.
prepare_mirror() {
  rm -rf "$work/mirror"
  cp -a "$work/tree" "$work/mirror"
  python3 - "$work/tree" <<'PY'
import os, sys, time
root = sys.argv[1]
names = sorted(os.path.join(d, f) for d, _, fs in os.walk(root) for f in fs)
for p in names[::10]:
    with open(p, "ab") as f:
        f.write(b" changed")
    t = time.time() + 5
    os.utime(p, (t, t))
PY
  sync
}
mirror_ours=() mirror_rsync=()
for r in $(seq "$runs"); do
  prepare_mirror; mirror_rsync+=("$(timed rsync -a "$work/tree/" "$work/mirror/")")
  prepare_mirror; mirror_ours+=("$(timed "$bench" mirror "$work/tree" "$work/mirror")")
done

zip_ours=() zip_tool=() unzip_ours=() unzip_tool=()
[ "$mirroronly" = 1 ] || for r in $(seq "$runs"); do
  rm -f "$work/tool.zip" "$work/ours.zip"
  zip_tool+=("$(cd "$work" && timed zip -r -q "$work/tool.zip" mixed)")
  zip_ours+=("$(timed "$bench" zip "$work/mixed" "$work/ours.zip")")
  rm -rf "$work/out-tool" "$work/out-ours"; sync
  unzip_tool+=("$(timed unzip -q "$work/tool.zip" -d "$work/out-tool")")
  unzip_ours+=("$(timed "$bench" unzip "$work/tool.zip" "$work/out-ours")")
done
rm -rf "$work/out-tool" "$work/out-ours"

# report NAME RUNS... : each run is "wall cpu"; the first half are ours, the second the tool's.
report() {
  local name=$1 col ours tool
  for col in 1 2; do
    ours=$(printf '%s\n' "${@:2:$runs}" | awk -v c=$col '{print $c}' | median)
    tool=$(printf '%s\n' "${@:$((2 + runs))}" | awk -v c=$col '{print $c}' | median)
    printf '%-34s %-4s ours %7.3f s   tool %7.3f s   ratio %.2f\n' "$name" "$([ $col = 1 ] && echo wall || echo cpu)" \
      "$ours" "$tool" "$(awk -v o="$ours" -v t="$tool" 'BEGIN { print (t > 0 ? o / t : 0) }')"
  done
}
echo "corpus: $files files mirrored$([ "$mirroronly" = 1 ] || echo ", $(du -sm "$work/mixed" | cut -f1) MiB zipped"); median of $runs"
report "mirror, 10 % changed vs rsync -a" "${mirror_ours[@]}" "${mirror_rsync[@]}"
[ "$mirroronly" = 1 ] && exit 0
report "zip vs zip -r -q" "${zip_ours[@]}" "${zip_tool[@]}"
report "unzip vs unzip -q" "${unzip_ours[@]}" "${unzip_tool[@]}"
