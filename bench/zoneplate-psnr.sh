#!/usr/bin/env bash
# The quality check that goes with the speed work: a zone plate (concentric rings whose frequency
# rises to the pixel limit at the edges) thumbnailed into a 128-pixel box, compared with the same
# picture decoded whole and reduced with libvips' Lanczos 3 filter. Any shortcut that aliases
# (a box filter, point sampling, too coarse a shrink-on-load) shows as moiré rings and a lower
# PSNR. A measurement, not a timed test: run it after changing the rendering path.
#
# Usage: bench/zoneplate-psnr.sh [--min DB]     (orvel-thumbs is $ORVEL_THUMBS or build/src/app/orvel-thumbs)
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
top=$(dirname "$here")
orvel=${ORVEL_THUMBS:-$top/build/src/app/orvel-thumbs}
min=45
[ "${1:-}" = --min ] && min=${2:?--min needs a number}
for tool in vips vipsthumbnail; do
    command -v "$tool" >/dev/null || { echo "$tool is missing (Debian: libvips-tools)" >&2; exit 2; }
done
[ -x "$orvel" ] || { echo "no orvel-thumbs at $orvel (set ORVEL_THUMBS)" >&2; exit 2; }

work=$(mktemp -d "${TMPDIR:-/tmp}/orvel-zoneplate.XXXXXX")
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work/config XDG_CACHE_HOME=$work/cache
mkdir -p "$work/in" "$XDG_CONFIG_HOME" "$XDG_CACHE_HOME"

# psnr A B: the peak signal-to-noise ratio of B against A (same size, 8 bits), in dB.
psnr() {
    vips subtract "$1" "$2" "$work/d.v"
    vips multiply "$work/d.v" "$work/d.v" "$work/sq.v"
    awk -v m="$(vips avg "$work/sq.v")" 'BEGIN { if (m > 0) printf "%.2f", 10 * log(255 * 255 / m) / log(10); else print "inf" }'
}

# A 2048-pixel grey zone plate in RGB, as cameras and editors write them: as a JPEG, where
# shrink-on-load plays (the decoder's 1/8 scale leaves twice the box), and as a PNG, where it does not.
vips zone "$work/z.v" 2048 2048
vips linear "$work/z.v" "$work/z8.v" 127.5 127.5 --uchar
vips bandjoin "$work/z8.v $work/z8.v $work/z8.v" "$work/z3.v"
vips copy "$work/z3.v" "$work/in/zoneplate.jpg[Q=95]" --interpretation srgb
vips copy "$work/z3.v" "$work/in/zoneplate.png" --interpretation srgb

"$orvel" --jobs 1 --set filetype=4 --set width=128 --set height=128 --set extensionFormat=2 \
    --set extension=thumbs --set create=0 --set sizing=0 --set sharpen=0 --set Antialiasing=3 \
    "$work/in" >"$work/orvel.log" 2>&1 || { cat "$work/orvel.log" >&2; exit 1; }

status=0
printf '| picture | orvel-thumbs dB | vipsthumbnail dB |%s\n' "$(command -v gm >/dev/null && echo " GraphicsMagick dB |")"
printf '|---|---:|---:|%s\n' "$(command -v gm >/dev/null && echo "---:|")"
for picture in zoneplate.jpg zoneplate.png; do
    source=$work/in/$picture
    size=$(vipsheader -f width "$source")
    vips resize "$source" "$work/ref.v" "$(awk -v s="$size" 'BEGIN { print 128 / s }')" --kernel lanczos3
    made=$(find "$work/in" -path "*/thumbs/*" -name "${picture%.*}*" | head -n 1)
    [ -n "$made" ] || { echo "orvel-thumbs made no thumbnail of $picture" >&2; cat "$work/orvel.log" >&2; exit 1; }
    ours=$(psnr "$work/ref.v" "$made")
    vipsthumbnail --size 128x128 -o "$work/vt-%s.png" "$source"
    theirs=$(psnr "$work/ref.v" "$work/vt-${picture%.*}.png")
    gm_column=
    if command -v gm >/dev/null; then
        gm convert -size 256x256 "$source" -thumbnail 128x128 "$work/gm.png"
        gm_column=" $(psnr "$work/ref.v" "$work/gm.png") |"
    fi
    printf '| %s | %s | %s |%s\n' "$picture" "$ours" "$theirs" "$gm_column"
    awk -v v="$ours" -v m="$min" 'BEGIN { exit !(v == "inf" || v >= m) }' || status=1
done
echo
[ $status = 0 ] && echo "orvel-thumbs keeps at least $min dB: PASS" || echo "orvel-thumbs falls under $min dB: MISS"
exit $status
