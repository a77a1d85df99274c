#!/usr/bin/env bash
# Benchmarks orvel-thumbs against vipsthumbnail on a corpus of its own making: large photographic
# JPEGs, PNGs with alpha and multi-page PDFs. Both make 128x128-box JPEG thumbnails at quality 80
# from the same files in the same run; every measurement is taken several times and the median
# kept. Prints wall time, peak memory of the whole process tree, their ratios and the speed-up of
# --jobs 2 over --jobs 1, beside the targets. See bench/README.md.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
top=$(dirname "$here")

usage() {
    cat <<EOF
Usage: $(basename "$0") [--quick] [--runs N] [--corpus DIR] [--corpus-only] [--vips-only]

  --quick        a smoke run: fewer and smaller files (a separate corpus, made once)
  --runs N       measurements per command, median kept (default 3)
  --corpus DIR   where the corpus is made and kept (default bench/corpus; reused when complete)
  --corpus-only  make the corpus and stop
  --vips-only    measure vipsthumbnail alone (when orvel-thumbs is not available)

orvel-thumbs is \$ORVEL_THUMBS, else build/src/app/orvel-thumbs (built with scripts/setup.sh
when missing).
EOF
}

quick=0 runs=3 corpus=$here/corpus corpus_only=0 vips_only=0
while [ $# -gt 0 ]; do
    case $1 in
        --quick) quick=1 ;;
        --runs) runs=${2:?--runs needs a number}; shift ;;
        --corpus) corpus=${2:?--corpus needs a folder}; shift ;;
        --corpus-only) corpus_only=1 ;;
        --vips-only) vips_only=1 ;;
        -h | --help) usage; exit 0 ;;
        *) usage >&2; exit 2 ;;
    esac
    shift
done
[[ $runs =~ ^[1-9][0-9]*$ ]] || { echo "--runs wants a positive whole number" >&2; exit 2; }

for tool in vips vipsthumbnail gs python3; do
    command -v "$tool" >/dev/null || { echo "$tool is missing (Debian: libvips-tools, ghostscript, python3)" >&2; exit 2; }
done

log() { echo "$@" >&2; }

# ---------------------------------------------------------------------------------------------
# Corpus. Kept under $corpus/full or $corpus/quick and reused when its ".complete" stamp matches
# the generator version below (bump it whenever the recipes change).

generator=1
if [ $quick = 1 ]; then
    set_dir=$corpus/quick
    jpeg_count=4 jpeg_w=2400 jpeg_h=1600
    png_count=2 png_w=1200 png_h=800
    pdf_count=2 pdf_pages=3
else
    set_dir=$corpus/full
    jpeg_count=16 jpeg_w=6000 jpeg_h=4000
    png_count=8 png_w=3000 png_h=2000
    pdf_count=4 pdf_pages=10
fi

# make_picture OUT W H SEED GRAIN ALPHA: a photograph-like picture of W x H pixels (each side a
# multiple of 400). Built at a quarter of the size, then enlarged, so it costs seconds, not minutes:
#   - smooth light and colour: noise of 1/200 the size, enlarged and blurred, channels correlated
#   - a mid-frequency texture with its own tint, shown inside hard-edged regions (the "objects")
#   - a vertical light fall-off, then luminance grain of sigma GRAIN at full size
#   - ALPHA 1 adds an alpha channel: large opaque and clear areas with soft borders
make_picture() {
    local out=$1 W=$2 H=$3 seed=$4 grain=$5 alpha=$6
    local w=$((W / 4)) h=$((H / 4)) t
    t=$(mktemp -d "${TMPDIR:-/tmp}/orvel-bench-gen.XXXXXX")
    noise() { vips gaussnoise "$1" "$2" "$3" --sigma "$4" --mean "$5" --seed "$6"; }
    enlarge() { vips resize "$2" "$t/s.v" "$3" --kernel cubic && vips gaussblur "$t/s.v" "$1" "$4"; }
    pick() { awk -v s="$seed" -v i="$1" -v lo="$2" -v hi="$3" 'BEGIN { srand(s * 7 + i); print lo + (hi - lo) * rand() }'; }

    noise "$t/l0.v" $((w / 50)) $((h / 50)) 55 128 $((seed * 10 + 1))
    enlarge "$t/l.v" "$t/l0.v" 50 22
    for b in 0 1 2; do noise "$t/c$b.v" $((w / 50)) $((h / 50)) 30 0 $((seed * 10 + 2 + b)); done
    vips bandjoin "$t/c0.v $t/c1.v $t/c2.v" "$t/c3.v"
    enlarge "$t/c.v" "$t/c3.v" 50 22
    vips add "$t/l.v" "$t/c.v" "$t/a.v"

    noise "$t/x0.v" $((w / 4)) $((h / 4)) 50 0 $((seed * 10 + 5))
    enlarge "$t/x.v" "$t/x0.v" 4 1.5
    vips linear "$t/l.v" "$t/lt.v" "0.5 0.6 0.4" "$(pick 1 0 90) $(pick 2 20 100) $(pick 3 0 60)"
    vips add "$t/lt.v" "$t/x.v" "$t/b.v"

    noise "$t/m0.v" $((w / 100)) $((h / 100)) 40 128 $((seed * 10 + 6))
    vips resize "$t/m0.v" "$t/m1.v" 100 --kernel cubic
    vips relational_const "$t/m1.v" "$t/m2.v" more 128
    vips gaussblur "$t/m2.v" "$t/m.v" 1.0
    vips ifthenelse "$t/m.v" "$t/b.v" "$t/a.v" "$t/d0.v" --blend
    vips xyz "$t/xy.v" "$w" "$h"
    vips extract_band "$t/xy.v" "$t/y.v" 1
    vips linear "$t/y.v" "$t/g.v" -- "$(awk -v h="$h" 'BEGIN { print -60 / h }')" 30
    vips add "$t/d0.v" "$t/g.v" "$t/d.v"

    vips resize "$t/d.v" "$t/D.v" 4 --kernel cubic
    noise "$t/e.v" "$W" "$H" "$grain" 0 $((seed * 10 + 7))
    vips add "$t/D.v" "$t/e.v" "$t/f.v"
    vips linear "$t/f.v" "$t/u.v" 1 0 --uchar
    if [ "$alpha" = 1 ]; then
        noise "$t/k0.v" $((w / 50)) $((h / 50)) 50 128 $((seed * 10 + 8))
        enlarge "$t/k1.v" "$t/k0.v" 50 6
        vips linear "$t/k1.v" "$t/k2.v" 4 -- -384
        vips resize "$t/k2.v" "$t/k3.v" 4 --kernel cubic
        vips linear "$t/k3.v" "$t/k.v" 1 0 --uchar
        vips bandjoin "$t/u.v $t/k.v" "$t/ua.v"
        mv "$t/ua.v" "$t/u.v"
    fi
    vips copy "$t/u.v" "$out" --interpretation srgb
    rm -rf "$t"
}

make_corpus() {
    local dir=$1 i
    rm -rf "$dir"
    mkdir -p "$dir/jpeg" "$dir/png" "$dir/pdf"
    for ((i = 1; i <= jpeg_count; i++)); do
        log "corpus: JPEG $i/$jpeg_count (${jpeg_w}x$jpeg_h)"
        make_picture "$dir/jpeg/photo-$(printf %02d "$i").jpg[Q=90]" "$jpeg_w" "$jpeg_h" "$i" 7 0
    done
    for ((i = 1; i <= png_count; i++)); do
        log "corpus: PNG $i/$png_count (${png_w}x$png_h RGBA)"
        make_picture "$dir/png/layer-$(printf %02d "$i").png" "$png_w" "$png_h" $((100 + i)) 3 1
    done
    for ((i = 1; i <= pdf_count; i++)); do
        log "corpus: PDF $i/$pdf_count ($pdf_pages pages)"
        local ps=$dir/pdf/.doc.ps
        python3 "$here/make_ps.py" $((200 + i)) "$pdf_pages" "$ps"
        gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pdfwrite \
            -sOutputFile="$dir/pdf/document-$(printf %02d "$i").pdf" "$ps"
        rm -f "$ps"
    done
    echo "$generator" >"$dir/.complete"
}

if [ "$(cat "$set_dir/.complete" 2>/dev/null)" != "$generator" ]; then
    make_corpus "$set_dir"
else
    log "corpus: reusing $set_dir"
fi
[ $corpus_only = 1 ] && exit 0

# ---------------------------------------------------------------------------------------------
# The programs.

if [ $vips_only = 0 ]; then
    orvel=${ORVEL_THUMBS:-$top/build/src/app/orvel-thumbs}
    if [ ! -x "$orvel" ]; then
        [ -n "${ORVEL_THUMBS:-}" ] && { echo "ORVEL_THUMBS=$orvel is not an executable" >&2; exit 2; }
        log "building orvel-thumbs with scripts/setup.sh"
        "$top/scripts/setup.sh" "$top/build" -DORVEL_BUILD_TESTS=OFF >&2
    fi
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/orvel-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
# A settings store and a thumbnail cache of the run's own, so the user's settings play no part.
export XDG_CONFIG_HOME=$work/config XDG_CACHE_HOME=$work/cache
mkdir -p "$XDG_CONFIG_HOME" "$XDG_CACHE_HOME"

outname=bench-thumbs
orvel_settings=(--set filetype=3 --set width=128 --set height=128 --set quality=0.8
    --set extensionFormat=2 --set extension=$outname
    --set create=0 --set sizing=0 --set sharpen=0 --set Antialiasing=3)

# measure NAME OUTDIR MAKE EXPECTED COMMAND...: empties OUTDIR (and makes it when MAKE is 1), runs
# the command under peak_rss.py and answers "wall peak cpu" on standard output; warns when the
# command failed or made another number of thumbnails than EXPECTED.
measure() {
    local name=$1 outdir=$2 make=$3 expected=$4
    shift 4
    rm -rf "$outdir"
    [ "$make" = 1 ] && mkdir -p "$outdir"
    local line wall rss pss peak cpu status made ignored
    # Time and memory come from two runs: sampling /proc every 10 ms takes CPU from the command,
    # which would slow a run that keeps both cores busy.
    line=$(python3 "$here/peak_rss.py" --interval 0 --log "$work/$name.log" -- "$@")
    read -r wall ignored ignored cpu status <<<"$(sed 's/[a-z_]*=//g' <<<"$line")"
    rm -rf "$outdir"
    [ "$make" = 1 ] && mkdir -p "$outdir"
    line=$(python3 "$here/peak_rss.py" --log "$work/$name.log" -- "$@")
    read -r ignored rss pss ignored status <<<"$(sed 's/[a-z_]*=//g' <<<"$line")"
    # Memory is the tree's peak PSS by default: every process maps the same libraries, and summed
    # RSS would count those pages once per process. BENCH_MEMORY=rss gives the summed RSS instead.
    if [ "${BENCH_MEMORY:-pss}" = rss ]; then peak=$rss; else peak=$pss; fi
    made=$({ find "$outdir" -maxdepth 1 -name '*.jpg' 2>/dev/null || true; } | wc -l)
    if [ "$status" != 0 ] || [ "$made" != "$expected" ]; then
        log "  warning: $name exited $status and made $made of $expected thumbnails (log: $(tail -n 3 "$work/$name.log" | tr '\n' ' '))"
    fi
    echo "$wall $peak $cpu"
}

median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'; }
verdict() { awk -v v="$1" -v t="$2" -v op="$3" 'BEGIN { if (v == "n/a") print "n/a"; else if ((op == "<=" && v <= t) || (op == ">=" && v >= t)) print "PASS"; else print "MISS" }'; }

load_at_start=$(cut -d' ' -f1-3 /proc/loadavg)
log "machine: $(nproc) cores, load $load_at_start, $(vips --version), vipsthumbnail concurrency ${VIPS_CONCURRENCY:-default}"
[ $vips_only = 0 ] && log "orvel-thumbs: $orvel ($("$orvel" --version 2>/dev/null | head -n 1 || echo "no --version"))"

declare -A result
for batch in jpeg png pdf; do
    src=$set_dir/$batch
    mapfile -t files < <(find "$src" -maxdepth 1 -type f ! -name '.*' | sort)
    n=${#files[@]}
    # orvel-thumbs walks the whole folder: anything else in it would be measured too.
    stray=$(find "$src" -mindepth 1 -maxdepth 1 -type d ! -name "$outname" | head -n 3)
    [ -n "$stray" ] && log "warning: $src holds folders that orvel-thumbs will also walk: $(tr '\n' ' ' <<<"$stray")"
    declare -a vw=() vp=() vc=() o1w=() o1p=() o1c=() o2w=() o2p=() o2c=()
    for ((r = 1; r <= runs; r++)); do
        read -r w p c < <(measure "vips-$batch-$r" "$work/vips-out" 1 "$n" \
            vipsthumbnail --size 128x128 -o "$work/vips-out/%s.jpg[Q=80,background=255]" "${files[@]}")
        vw+=("$w") vp+=("$p") vc+=("$c")
        log "$batch run $r/$runs: vipsthumbnail ${w}s ${p}MiB cpu ${c}s"
        if [ $vips_only = 0 ]; then
            read -r w p c < <(measure "orvel1-$batch-$r" "$src/$outname" 0 "$n" \
                "$orvel" --jobs 1 "${orvel_settings[@]}" "$src")
            o1w+=("$w") o1p+=("$p") o1c+=("$c")
            log "$batch run $r/$runs: orvel-thumbs --jobs 1 ${w}s ${p}MiB cpu ${c}s"
            read -r w p c < <(measure "orvel2-$batch-$r" "$src/$outname" 0 "$n" \
                "$orvel" --jobs 2 "${orvel_settings[@]}" "$src")
            o2w+=("$w") o2p+=("$p") o2c+=("$c")
            log "$batch run $r/$runs: orvel-thumbs --jobs 2 ${w}s ${p}MiB cpu ${c}s"
            rm -rf "${src:?}/$outname"
        fi
    done
    result[$batch.n]=$n
    result[$batch.vw]=$(median "${vw[@]}") result[$batch.vp]=$(median "${vp[@]}") result[$batch.vc]=$(median "${vc[@]}")
    if [ $vips_only = 0 ]; then
        result[$batch.o1w]=$(median "${o1w[@]}") result[$batch.o1p]=$(median "${o1p[@]}") result[$batch.o1c]=$(median "${o1c[@]}")
        result[$batch.o2w]=$(median "${o2w[@]}") result[$batch.o2p]=$(median "${o2p[@]}")
    fi
done

# ---------------------------------------------------------------------------------------------
# Report.

label() { case $1 in jpeg) echo JPEG ;; png) echo PNG ;; pdf) echo PDF ;; esac; }
echo
echo "orvel-thumbs vs vipsthumbnail: 128x128 box, JPEG quality 80, median of $runs runs$([ $quick = 1 ] && echo ", QUICK corpus (targets not meaningful)")"
echo "corpus: $set_dir ($jpeg_count JPEG ${jpeg_w}x$jpeg_h Q90, $png_count PNG ${png_w}x$png_h RGBA, $pdf_count PDF x $pdf_pages pages)"
echo "machine: $(nproc) cores, load average $load_at_start at the start (figures are only comparable on an idle machine)"
echo "memory: peak ${BENCH_MEMORY:-pss} of the whole process tree"
echo
if [ $vips_only = 1 ]; then
    printf '%-6s %5s %10s %10s %10s\n' batch files "vips s" "vips MiB" "vips cpu"
    for batch in jpeg png pdf; do
        printf '%-6s %5s %10s %10s %10s\n' "$(label $batch)" "${result[$batch.n]}" \
            "${result[$batch.vw]}" "${result[$batch.vp]}" "${result[$batch.vc]}"
    done
    exit 0
fi

printf '%-6s %5s | %9s %9s %6s | %9s %9s %6s | %9s %8s | %8s %8s\n' \
    batch files "orvel s" "vips s" ratio "orvel MiB" "vips MiB" ratio "jobs2 s" speed-up "orvel cpu" "vips cpu"
for batch in jpeg png pdf; do
    result[$batch.wr]=$(ratio "${result[$batch.o1w]}" "${result[$batch.vw]}")
    result[$batch.pr]=$(ratio "${result[$batch.o1p]}" "${result[$batch.vp]}")
    result[$batch.su]=$(ratio "${result[$batch.o1w]}" "${result[$batch.o2w]}")
    printf '%-6s %5s | %9s %9s %6s | %9s %9s %6s | %9s %8s | %8s %8s\n' "$(label $batch)" "${result[$batch.n]}" \
        "${result[$batch.o1w]}" "${result[$batch.vw]}" "${result[$batch.wr]}" \
        "${result[$batch.o1p]}" "${result[$batch.vp]}" "${result[$batch.pr]}" \
        "${result[$batch.o2w]}" "${result[$batch.su]}" "${result[$batch.o1c]}" "${result[$batch.vc]}"
done
echo
echo "targets (orvel with --jobs 1 unless said otherwise):"
printf '  wall ratio on the JPEG batch <= 1.0:  %s %s\n' "${result[jpeg.wr]}" "$(verdict "${result[jpeg.wr]}" 1.0 '<=')"
for batch in jpeg png pdf; do
    printf '  %-4s --jobs 2 speed-up >= 1.7:      %s %s\n' "$(label $batch)" "${result[$batch.su]}" "$(verdict "${result[$batch.su]}" 1.7 '>=')"
done
for batch in jpeg png pdf; do
    printf '  %-4s peak memory ratio <= 1.5:      %s %s\n' "$(label $batch)" "${result[$batch.pr]}" "$(verdict "${result[$batch.pr]}" 1.5 '<=')"
done
