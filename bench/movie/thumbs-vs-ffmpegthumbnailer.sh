#!/usr/bin/env bash
# Benchmarks movie thumbnails: orvel-thumbs against ffmpegthumbnailer and against the ffmpeg tool's
# exact seek, on three sets of generated movies: a test pattern with the encoders' usual key-frame
# spacing, camera-style footage (H.264 and HEVC, 1080p, a key frame every second) and long-GOP
# downloads (a key frame every 10 seconds). All make 128-pixel JPEG thumbnails of the same files in
# the same run, one file at a time and then two at a time; each measurement is taken several times
# and the median kept. Prints wall and CPU (user + system) times and their ratios.
# See bench/movie/README.md.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/../.." && pwd)
runs=3 corpus=$here/../corpus/movie
usage="Usage: $(basename "$0") [--runs N] [--corpus DIR]"
while [ $# -gt 0 ]; do
    case $1 in
        --runs) runs=${2:?--runs needs a number}; shift ;;
        --corpus) corpus=${2:?--corpus needs a folder}; shift ;;
        -h | --help) echo "$usage"; exit 0 ;;
        *) echo "$usage" >&2; exit 2 ;;
    esac
    shift
done
for tool in ffmpeg ffprobe ffmpegthumbnailer python3 /usr/bin/time; do
    command -v "$tool" >/dev/null || { echo "$tool is missing (Debian: ffmpeg, ffmpegthumbnailer, python3, time)" >&2; exit 2; }
done

# ---------------------------------------------------------------------------------------------
# Corpus: made once, kept while the stamp carries this generator version.
generator=2
movies=(
    # set     name                     codec  size       fps seconds
    "pattern  h264-720p-10s.mp4        h264   1280x720   24  10"
    "pattern  h264-720p-60s.mp4        h264   1280x720   24  60"
    "pattern  h264-1080p-30s.mp4       h264   1920x1080  24  30"
    "pattern  h264-1080p-120s.mkv      h264   1920x1080  24  120"
    "pattern  mpeg4-720p-20s.avi       mpeg4  1280x720   24  20"
    "pattern  mpeg4-720p-90s.avi       mpeg4  1280x720   24  90"
    "pattern  mpeg4-1080p-45s.mp4      mpeg4  1920x1080  24  45"
    "pattern  mpeg4-1080p-120s.avi     mpeg4  1920x1080  24  120"
    "pattern  vp9-720p-15s.webm        vp9    1280x720   24  15"
    "pattern  vp9-1080p-40s.webm       vp9    1920x1080  24  40"
    "camera   cam-h264-1080p-10s.mp4   cam264 1920x1080  30  10"
    "camera   cam-h264-1080p-30s.mov   cam264 1920x1080  30  30"
    "camera   cam-h264-1080p-120s.mp4  cam264 1920x1080  30  120"
    "camera   cam-hevc-1080p-10s.mp4   cam265 1920x1080  30  10"
    "camera   cam-hevc-1080p-20s.mov   cam265 1920x1080  30  20"
    "longgop  dl-h264-1080p-60s.mkv    dl264  1920x1080  25  60"
    "longgop  dl-h264-1080p-30s.mp4    dl264  1920x1080  25  30"
    "longgop  dl-hevc-720p-30s.mp4     dl265  1280x720   25  30"
)
sets=(pattern camera longgop)
if [ "$(cat "$corpus/.complete" 2>/dev/null)" != "$generator" ]; then
    mkdir -p "$corpus"
    for row in "${movies[@]}"; do
        read -r _ name codec size fps seconds <<<"$row"
        [ -s "$corpus/$name" ] && [ "$(cat "$corpus/.$name.done" 2>/dev/null)" = "$generator" ] && continue
        echo "making $name" >&2
        # The pattern set: a moving test pattern, which compresses far better than filmed material.
        src="testsrc2=s=$size:r=$fps:d=$seconds"
        # The other sets: the pattern under strong changing grain, which costs bits and decoding
        # time much as footage from a camera sensor does (about 10 Mb/s at 1080p).
        grain="$src,noise=alls=14:allf=t+u"
        # x265's keyint also sets how often a decoder can start afresh (every key frame is an IDR).
        case $codec in
            h264) args=(-i "$src" -c:v libx264 -preset superfast -crf 23) ;;
            mpeg4) args=(-i "$src" -c:v mpeg4 -q:v 4 -g 250) ;;
            vp9) args=(-i "$src" -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -b:v 2M -row-mt 1) ;;
            cam264) args=(-i "$grain" -c:v libx264 -preset ultrafast -bf 2 -g "$fps" -crf 23) ;;
            cam265) args=(-i "$grain" -c:v libx265 -preset ultrafast -x265-params "keyint=$fps:log-level=error") ;;
            dl264) args=(-i "$grain" -c:v libx264 -preset superfast -g 250 -crf 23) ;;
            dl265) args=(-i "$grain" -c:v libx265 -preset ultrafast -x265-params "keyint=250:log-level=error") ;;
        esac
        ffmpeg -nostdin -v error -y -f lavfi "${args[@]}" -pix_fmt yuv420p "$corpus/$name"
        echo "$generator" >"$corpus/.$name.done"
    done
    echo "$generator" >"$corpus/.complete"
fi

thumbs=${ORVEL_THUMBS:-$top/build/src/app/orvel-thumbs}
[ -x "$thumbs" ] || { echo "no orvel-thumbs at $thumbs (set ORVEL_THUMBS or run scripts/thumbs.sh once)" >&2; exit 2; }

# ---------------------------------------------------------------------------------------------
# Measurements. Outputs go to a scratch folder; the corpus folder only ever holds the movies.
out=$(mktemp -d "${TMPDIR:-/tmp}/orvel-movie-bench.XXXXXX")
trap 'rm -rf "$out" "$corpus/.orvel-bench"' EXIT
export XDG_CONFIG_HOME=$out/config XDG_CACHE_HOME=$out/cache
mkdir -p "$out/ftn" "$out/exact"
export out thumbs corpus

median() { python3 -c 'import sys, statistics; print("%.3f" % statistics.median(float(x) for x in sys.argv[1:]))' "$@"; }
# Prints "wall cpu" in seconds for the named exported function and its arguments; cpu is the user
# and system time of every process it waited for.
measure() {
    /usr/bin/time -f '%e %U %S' -o "$out/time" bash -c '"$@" >/dev/null 2>&1' _ "$@" || { echo "failed: $*" >&2; exit 1; }
    read -r e u s <"$out/time"
    python3 -c "print('%.3f %.3f' % ($e, $u + $s))"
}

# The frame orvel-thumbs takes: floor(min(length / 2, 15)) seconds, worked out beforehand so that
# the ffmpeg tool's exact seek (to the key frame before the time, then decoding forward) takes it too.
for set in "${sets[@]}"; do
    : >"$out/$set.files" && : >"$out/$set.exact"
done
for row in "${movies[@]}"; do
    read -r set name _ <<<"$row"
    f=$corpus/$name
    d=$(ffprobe -v error -show_entries format=duration -of csv=p=0 "$f")
    printf '%s\0' "$f" >>"$out/$set.files"
    printf '%s\0%s\0' "$(python3 -c "import math; print(math.floor(min(max($d * 0.5, 0), 15)))")" "$f" >>"$out/$set.exact"
done

exact_one() { ffmpeg -nostdin -v error -y -ss "$1" -i "$2" -frames:v 1 -vf scale=128:128:force_original_aspect_ratio=decrease -q:v 4 "$out/exact/$(basename "$2").jpg"; }
ftn_one() { ffmpegthumbnailer -i "$1" -o "$out/ftn/$(basename "$1").jpg" -s 128 -t 50% -q 8; }
# The files themselves are given (not the folder), so earlier thumbnails are never thumbnailed.
orvel_run() { xargs -0 "$thumbs" --quiet -j "$2" -s 128 -f jpeg --quality 80 --folder .orvel-bench <"$out/$1.files"; }
ftn_run() { xargs -0 -n 1 -P "$2" bash -c 'ftn_one "$0"' <"$out/$1.files"; }
exact_run() { xargs -0 -n 2 -P "$2" bash -c 'exact_one "$0" "$1"' <"$out/$1.exact"; }
export -f exact_one ftn_one orvel_run ftn_run exact_run

count() { find "$1" -name '*.jpg' | wc -l; }
for set in "${sets[@]}"; do # warms the page cache and checks that every tool works
    measure orvel_run "$set" 1 >/dev/null
    measure ftn_run "$set" 1 >/dev/null
    measure exact_run "$set" 1 >/dev/null
done
[ "$(count "$corpus/.orvel-bench")" = ${#movies[@]} ] || { echo "orvel-thumbs did not make ${#movies[@]} thumbnails" >&2; exit 1; }
[ "$(count "$out/ftn")" = ${#movies[@]} ] || { echo "ffmpegthumbnailer did not make ${#movies[@]} thumbnails" >&2; exit 1; }
[ "$(count "$out/exact")" = ${#movies[@]} ] || { echo "ffmpeg did not make ${#movies[@]} thumbnails" >&2; exit 1; }

declare -A wall cpu
for set in "${sets[@]}"; do
    for jobs in 1 2; do
        for tool in orvel ftn exact; do
            w=() c=()
            for ((i = 0; i < runs; i++)); do
                read -r e u <<<"$(measure "${tool}_run" "$set" "$jobs")"
                w+=("$e") c+=("$u")
            done
            wall[$set$tool$jobs]=$(median "${w[@]}")
            cpu[$set$tool$jobs]=$(median "${c[@]}")
        done
    done
done

echo "128-pixel JPEG thumbnails, median of $runs runs ($(nproc) cores, load average $(cut -d' ' -f1-3 /proc/loadavg))"
printf '%-8s %-26s %17s %17s\n' "" "" "1 at once" "2 at once"
printf '%-8s %-26s %8s %8s %8s %8s\n' "set" "tool" "wall" "cpu" "wall" "cpu"
for set in "${sets[@]}"; do
    for tool in orvel ftn exact; do
        case $tool in
            orvel) label="orvel-thumbs" ;;
            ftn) label="ffmpegthumbnailer -t 50%" ;;
            exact) label="ffmpeg -ss T (exact)" ;;
        esac
        printf '%-8s %-26s %7ss %7ss %7ss %7ss\n' "$set" "$label" "${wall[${set}${tool}1]}" "${cpu[${set}${tool}1]}" \
            "${wall[${set}${tool}2]}" "${cpu[${set}${tool}2]}"
    done
done
for set in "${sets[@]}"; do
    python3 - "$set" "${wall[${set}orvel1]}" "${wall[${set}ftn1]}" "${wall[${set}exact1]}" "${wall[${set}orvel2]}" \
        "${cpu[${set}orvel1]}" "${cpu[${set}ftn1]}" "${cpu[${set}exact1]}" <<'PY'
import sys
s = sys.argv[1]
o1, f1, x1, o2, co, cf, cx = map(float, sys.argv[2:])
print("%-8s orvel / ffmpegthumbnailer %.2f x wall, %.2f x cpu; orvel / exact seek %.2f x wall, %.2f x cpu; -j 1 / -j 2 %.2f x"
      % (s, o1 / f1, co / cf, o1 / x1, co / cx, o1 / o2))
PY
done
