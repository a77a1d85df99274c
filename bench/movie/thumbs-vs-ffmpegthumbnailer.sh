#!/usr/bin/env bash
# Benchmarks movie thumbnails: orvel-thumbs against ffmpegthumbnailer on ten generated movies
# (H.264 and MPEG-4 at 720p and 1080p, VP9 in WebM, 10 to 120 seconds). Both make 128-pixel JPEG
# thumbnails of the same files in the same run, one file at a time and then two at a time; each
# measurement is taken several times and the median kept. Prints wall times and their ratios.
# See bench/movie/README.md.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/../.." && pwd)
runs=3 corpus=$here/../corpus/movie
while [ $# -gt 0 ]; do
    case $1 in
        --runs) runs=${2:?--runs needs a number}; shift ;;
        --corpus) corpus=${2:?--corpus needs a folder}; shift ;;
        -h | --help) echo "Usage: $(basename "$0") [--runs N] [--corpus DIR]"; exit 0 ;;
        *) echo "Usage: $(basename "$0") [--runs N] [--corpus DIR]" >&2; exit 2 ;;
    esac
    shift
done
for tool in ffmpeg ffmpegthumbnailer python3; do
    command -v "$tool" >/dev/null || { echo "$tool is missing (Debian: ffmpeg, ffmpegthumbnailer, python3)" >&2; exit 2; }
done
thumbs=${ORVEL_THUMBS:-$top/build/src/app/orvel-thumbs}
[ -x "$thumbs" ] || { echo "no orvel-thumbs at $thumbs (set ORVEL_THUMBS or run scripts/thumbs.sh once)" >&2; exit 2; }

# ---------------------------------------------------------------------------------------------
# Corpus: made once, kept while the stamp carries this generator version.
generator=1
movies=(
    # name                  codec  size       seconds
    "h264-720p-10s.mp4      h264   1280x720   10"
    "h264-720p-60s.mp4      h264   1280x720   60"
    "h264-1080p-30s.mp4     h264   1920x1080  30"
    "h264-1080p-120s.mkv    h264   1920x1080  120"
    "mpeg4-720p-20s.avi     mpeg4  1280x720   20"
    "mpeg4-720p-90s.avi     mpeg4  1280x720   90"
    "mpeg4-1080p-45s.mp4    mpeg4  1920x1080  45"
    "mpeg4-1080p-120s.avi   mpeg4  1920x1080  120"
    "vp9-720p-15s.webm      vp9    1280x720   15"
    "vp9-1080p-40s.webm     vp9    1920x1080  40"
)
if [ "$(cat "$corpus/.complete" 2>/dev/null)" != "$generator" ]; then
    rm -rf "$corpus" && mkdir -p "$corpus"
    for row in "${movies[@]}"; do
        read -r name codec size seconds <<<"$row"
        echo "making $name" >&2
        # A moving test pattern at 24 frames per second, with the encoders' usual key-frame spacing.
        src="testsrc2=s=$size:r=24:d=$seconds"
        case $codec in
            h264) args=(-c:v libx264 -preset superfast -crf 23) ;;
            mpeg4) args=(-c:v mpeg4 -q:v 4 -g 250) ;;
            vp9) args=(-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -b:v 2M -row-mt 1) ;;
        esac
        ffmpeg -nostdin -v error -y -f lavfi -i "$src" "${args[@]}" -pix_fmt yuv420p "$corpus/$name"
    done
    echo "$generator" >"$corpus/.complete"
fi

# ---------------------------------------------------------------------------------------------
# Measurements. Outputs go to a scratch folder; the corpus folder only ever holds the movies.
out=$(mktemp -d "${TMPDIR:-/tmp}/orvel-movie-bench.XXXXXX")
trap 'rm -rf "$out" "$corpus/.orvel-bench"' EXIT
export XDG_CONFIG_HOME=$out/config XDG_CACHE_HOME=$out/cache
mkdir -p "$out/ftn"
files=()
for row in "${movies[@]}"; do
    read -r name _ <<<"$row"
    files+=("$corpus/$name")
done

median() { python3 -c 'import sys, statistics; print("%.3f" % statistics.median(float(x) for x in sys.argv[1:]))' "$@"; }
wall() { # wall seconds of the command
    local start end
    start=$(date +%s.%N)
    "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; exit 1; }
    end=$(date +%s.%N)
    python3 -c "print('%.3f' % ($end - $start))"
}
# The same frame orvel-thumbs takes, by the ffmpeg tool: an exact seek (to the key frame before
# the time, then decoding forward), scaled to 128 pixels. The times are worked out beforehand.
declare -A at
for f in "${files[@]}"; do
    d=$(ffprobe -v error -show_entries format=duration -of csv=p=0 "$f")
    at[$f]=$(python3 -c "import math; print(math.floor(min(max($d * 0.5, 0), 15)))")
done
exact_list=$out/exact.txt
for f in "${files[@]}"; do printf '%s\t%s\n' "${at[$f]}" "$f"; done >"$exact_list"
exact_one() { ffmpeg -nostdin -v error -y -ss "$1" -i "$2" -frames:v 1 -vf scale=128:128:force_original_aspect_ratio=decrease -q:v 4 "$out/exact/$(basename "$2").jpg"; }
export -f exact_one
exact_run() { tr '\t\n' '\0\0' <"$exact_list" | xargs -0 -n 2 -P "$1" bash -c 'exact_one "$0" "$1"'; }
mkdir -p "$out/exact"
ftn_one() { ffmpegthumbnailer -i "$1" -o "$out/ftn/$(basename "$1").jpg" -s 128 -t 50% -q 8; }
export -f ftn_one
export out
# The files themselves are given (not the folder), so earlier thumbnails are never thumbnailed.
orvel_run() { "$thumbs" --quiet -j "$1" -s 128 -f jpeg --quality 80 --folder .orvel-bench "${files[@]}"; }
ftn_run() { printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$1" bash -c 'ftn_one "$0"'; }

wall orvel_run 1 >/dev/null # warms the page cache and checks that it works
[ "$(find "$corpus/.orvel-bench" -name '*.jpg' | wc -l)" = ${#movies[@]} ] || { echo "orvel-thumbs did not make ${#movies[@]} thumbnails" >&2; exit 1; }
wall ftn_run 1 >/dev/null
[ "$(find "$out/ftn" -name '*.jpg' | wc -l)" = ${#movies[@]} ] || { echo "ffmpegthumbnailer did not make ${#movies[@]} thumbnails" >&2; exit 1; }

wall exact_run 1 >/dev/null
[ "$(find "$out/exact" -name '*.jpg' | wc -l)" = ${#movies[@]} ] || { echo "ffmpeg did not make ${#movies[@]} thumbnails" >&2; exit 1; }

declare -A times
for jobs in 1 2; do
    o=() f=() x=()
    for ((i = 0; i < runs; i++)); do
        o+=("$(wall orvel_run "$jobs")")
        f+=("$(wall ftn_run "$jobs")")
        x+=("$(wall exact_run "$jobs")")
    done
    times[o$jobs]=$(median "${o[@]}")
    times[f$jobs]=$(median "${f[@]}")
    times[x$jobs]=$(median "${x[@]}")
done

echo "10 movies, 128-pixel JPEG thumbnails, median of $runs runs ($(nproc) cores)"
printf '%-28s %10s %10s\n' "" "1 at once" "2 at once"
printf '%-28s %9ss %9ss\n' "orvel-thumbs" "${times[o1]}" "${times[o2]}"
printf '%-28s %9ss %9ss\n' "ffmpegthumbnailer -t 50%" "${times[f1]}" "${times[f2]}"
printf '%-28s %9ss %9ss\n' "ffmpeg -ss T (exact frame)" "${times[x1]}" "${times[x2]}"
python3 - "${times[o1]}" "${times[f1]}" "${times[x1]}" "${times[o2]}" "${times[f2]}" "${times[x2]}" <<'PY'
import sys
o1, f1, x1, o2, f2, x2 = map(float, sys.argv[1:])
print("ratio orvel-thumbs / ffmpegthumbnailer: %.2f x (one at a time), %.2f x (two at a time); target <= 1.0 x" % (o1 / f1, o2 / f2))
print("ratio orvel-thumbs / ffmpeg exact frame: %.2f x (one at a time), %.2f x (two at a time)" % (o1 / x1, o2 / x2))
PY
