#!/usr/bin/env bash
# Benchmarks orvel-thumbs against the fastest programs that do the same job, on a corpus of its own
# making: large and small photographic JPEGs, PNGs with alpha, PDFs and PostScript/EPS documents.
# Every program makes 128-pixel-box thumbnails (JPEG quality 80 where it writes JPEG) from the same
# files in the same run; each measurement is taken several times and the median kept. Prints a
# Markdown table of wall and CPU time against each peer, the speed-up of --jobs 2, the peak memory
# of a worker against vipsthumbnail's, and the targets. See bench/README.md.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
top=$(dirname "$here")

usage() {
    cat <<USAGE
Usage: $(basename "$0") [--quick] [--runs N] [--corpus DIR] [--corpus-only] [--peers-only] [--batches LIST]

  --quick         a smoke run: fewer and smaller files (a separate corpus, made once)
  --runs N        measurements per command, median kept (default 3)
  --corpus DIR    where the corpus is made and kept (default bench/corpus; reused when complete)
  --corpus-only   make the corpus and stop
  --peers-only    measure the other programs alone (when orvel-thumbs is not available)
  --batches LIST  the batches to measure, separated by commas (default jpeg24,jpeg3,png,pdf,ps)

orvel-thumbs is \$ORVEL_THUMBS, else build/src/app/orvel-thumbs (built with scripts/setup.sh
when missing).
USAGE
}

quick=0 runs=3 corpus=$here/corpus corpus_only=0 peers_only=0 batches=jpeg24,jpeg3,png,pdf,ps
while [ $# -gt 0 ]; do
    case $1 in
        --quick) quick=1 ;;
        --runs) runs=${2:?--runs needs a number}; shift ;;
        --corpus) corpus=${2:?--corpus needs a folder}; shift ;;
        --corpus-only) corpus_only=1 ;;
        --peers-only | --vips-only) peers_only=1 ;;
        --batches) batches=${2:?--batches needs a list}; shift ;;
        -h | --help) usage; exit 0 ;;
        *) usage >&2; exit 2 ;;
    esac
    shift
done
[[ $runs =~ ^[1-9][0-9]*$ ]] || { echo "--runs wants a positive whole number" >&2; exit 2; }
IFS=, read -r -a batch_list <<<"$batches"
for batch in "${batch_list[@]}"; do
    case $batch in jpeg24 | jpeg3 | png | pdf | ps) ;; *) echo "unknown batch $batch" >&2; exit 2 ;; esac
done

for tool in vips vipsthumbnail gs python3 gm djpeg pdftoppm; do
    command -v "$tool" >/dev/null || {
        echo "$tool is missing (Debian: libvips-tools, ghostscript, python3, graphicsmagick, libjpeg-turbo-progs, poppler-utils)" >&2
        exit 2
    }
done

log() { echo "$@" >&2; }

# ---------------------------------------------------------------------------------------------
# Corpus. Kept under $corpus/full or $corpus/quick and reused when its ".complete" stamp matches
# the generator version below (bump it whenever the recipes change).

generator=2
if [ $quick = 1 ]; then
    set_dir=$corpus/quick
    jpeg24_count=4 jpeg24_w=2400 jpeg24_h=1600
    jpeg3_count=4 jpeg3_w=1200 jpeg3_h=800
    png_count=4 png_w=1200 png_h=800
    pdf_count=2 pdf_pages=3
    ps_count=2 eps_count=1 ps_pages=3
else
    set_dir=$corpus/full
    jpeg24_count=40 jpeg24_w=6000 jpeg24_h=4000
    jpeg3_count=40 jpeg3_w=2000 jpeg3_h=1600
    png_count=40 png_w=3000 png_h=2000
    pdf_count=10 pdf_pages=10
    ps_count=5 eps_count=2 ps_pages=10
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

# make_pictures DIR NAME EXT COUNT W H SEED GRAIN ALPHA: COUNT pictures DIR/NAME-NN.EXT. Synthesising
# a 24-megapixel picture takes a minute of CPU, so only every fifth is made from scratch (seeds
# SEED+1, SEED+2...); the four after it are that picture flipped, turned over and inverted, each
# encoded anew: the same statistics, other files.
make_pictures() {
    local dir=$1 name=$2 ext=$3 count=$4 W=$5 H=$6 seed=$7 grain=$8 alpha=$9 i opts=
    [ "$ext" = jpg ] && opts="[Q=90]"
    for ((i = 1; i <= count; i++)); do
        local out=$dir/$name-$(printf %02d "$i").$ext
        local base=$dir/$name-$(printf %02d $((i - (i - 1) % 5))).$ext tmp=$dir/.new.$ext
        [ -e "$out" ] && continue # made by an earlier, interrupted run
        log "corpus: $out (${W}x$H)"
        case $(((i - 1) % 5)) in
            0) make_picture "$tmp$opts" "$W" "$H" $((seed + (i + 4) / 5)) "$grain" "$alpha" ;;
            1) vips flip "$base" "$tmp$opts" horizontal ;;
            2) vips flip "$base" "$tmp$opts" vertical ;;
            3) vips rot "$base" "$tmp$opts" d180 ;;
            4) vips invert "$base" "$dir/.inverted.v"
               vips copy "$dir/.inverted.v" "$tmp$opts" --interpretation srgb
               rm -f "$dir/.inverted.v" ;;
        esac
        mv "$tmp" "$out"
    done
}

make_corpus() {
    local dir=$1 i ps
    # An interrupted run of this generator is resumed; anything else is made anew.
    [ "$(cat "$dir/.partial" 2>/dev/null)" = "$generator" ] || rm -rf "$dir"
    mkdir -p "$dir"
    echo "$generator" >"$dir/.partial"
    mkdir -p "$dir/jpeg24" "$dir/jpeg3" "$dir/png" "$dir/pdf" "$dir/ps"
    make_pictures "$dir/jpeg24" photo jpg "$jpeg24_count" "$jpeg24_w" "$jpeg24_h" 0 7 0
    make_pictures "$dir/jpeg3" photo jpg "$jpeg3_count" "$jpeg3_w" "$jpeg3_h" 50 5 0
    make_pictures "$dir/png" layer png "$png_count" "$png_w" "$png_h" 100 3 1
    for ((i = 1; i <= pdf_count; i++)); do
        log "corpus: PDF $i/$pdf_count ($pdf_pages pages)"
        ps=$dir/pdf/.doc.ps
        python3 "$here/make_ps.py" $((200 + i)) "$pdf_pages" "$ps"
        gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pdfwrite \
            -sOutputFile="$dir/pdf/document-$(printf %02d "$i").pdf" "$ps"
        rm -f "$ps"
    done
    for ((i = 1; i <= ps_count; i++)); do
        log "corpus: PostScript $i/$ps_count ($ps_pages pages)"
        python3 "$here/make_ps.py" $((300 + i)) "$ps_pages" "$dir/ps/document-$(printf %02d "$i").ps"
    done
    # EPS: one page, without the page device request an encapsulated file may not make.
    for ((i = 1; i <= eps_count; i++)); do
        log "corpus: EPS $i/$eps_count"
        python3 "$here/make_ps.py" $((400 + i)) 1 "$dir/ps/.figure.ps"
        sed -e '1s/.*/%!PS-Adobe-3.0 EPSF-3.0/' -e '/setpagedevice/d' "$dir/ps/.figure.ps" \
            >"$dir/ps/figure-$(printf %02d "$i").eps"
        rm -f "$dir/ps/.figure.ps"
    done
    rm -f "$dir/.partial"
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

if [ $peers_only = 0 ]; then
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

box=128 quality=80
outname=bench-thumbs
orvel_settings=(--set filetype=3 --set width=$box --set height=$box --set quality=0.8
    --set extensionFormat=2 --set extension=$outname
    --set create=0 --set sizing=0 --set sharpen=0 --set Antialiasing=3)

# The peers measured on each batch, fastest-expected first; the first is the one the target names.
peers_of() {
    case $1 in
        jpeg24) echo "gm djpeg vipsthumbnail" ;;
        jpeg3 | png) echo "gm vipsthumbnail" ;;
        pdf) echo "pdftoppm vipsthumbnail" ;;
        ps) echo "gs" ;;
    esac
}

# peer_argv PEER OUTDIR FILES...: sets argv to the peer's command line. Programs that take one file
# at a time run in a shell loop, whose own cost (a fork per file) a script driving them pays too.
peer_argv() {
    local peer=$1 out=$2
    shift 2
    case $peer in
        vipsthumbnail)
            argv=(vipsthumbnail --size ${box}x$box -o "$out/%s.jpg[Q=$quality,background=255]" "$@") ;;
        gm)
            # mogrify puts the path it was given under the output folder: give it bare names.
            argv=(bash -c 'cd "$1" && shift && exec gm mogrify "$@"' gm "$(dirname "$1")"
                -output-directory "$out" -size $((2 * box))x$((2 * box))
                -thumbnail ${box}x$box -quality $quality -format jpg "${@##*/}") ;;
        djpeg)
            # The decode floor: libjpeg's own 1/8 scaling, nothing resampled or encoded.
            argv=(bash -c 'o=$1; shift; for f; do djpeg -scale 1/8 -outfile "$o/${f##*/}.ppm" "$f" || exit; done'
                djpeg "$out" "$@") ;;
        pdftoppm)
            argv=(bash -c 'o=$1; shift; for f; do
                pdftoppm -f 1 -l 1 -scale-to '$box' -jpeg -jpegopt quality='$quality' "$f" "$o/${f##*/}" || exit
            done' pdftoppm "$out" "$@") ;;
        gs)
            # Page 1 straight to JPEG at the resolution that gives the box on the long side of the
            # bounding box (the page cropped to it for EPS).
            argv=(bash -c 'o=$1; shift; for f; do
                read -r w h < <(awk "/^%%BoundingBox:/ { print \$4 - \$2, \$5 - \$3; exit }" "$f")
                r=$(awk -v w="${w:-595}" -v h="${h:-842}" "BEGIN { print '$box' * 72 / (w > h ? w : h) }")
                crop=; case $f in *.eps) crop=-dEPSCrop ;; esac
                gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=jpeg -dJPEGQ='$quality' $crop -dFirstPage=1 -dLastPage=1 \
                    -r"$r" -sOutputFile="$o/${f##*/}.jpg" "$f" || exit
            done' gs "$out" "$@") ;;
    esac
}

# measure NAME OUTDIR MAKE EXPECTED MEMORY COMMAND...: empties OUTDIR (and makes it when MAKE is 1),
# times the command under peak_rss.py and, when MEMORY is 1, runs it again sampling its memory;
# answers "wall cpu tree-peak largest-process-peak" on standard output (memory 0 when not sampled).
# Warns when the command failed or made another number of files than EXPECTED.
measure() {
    local name=$1 outdir=$2 make=$3 expected=$4 memory=$5
    shift 5
    local line wall cpu rss pss proc peak=0 largest=0 status made ignored
    rm -rf "$outdir"
    [ "$make" = 1 ] && mkdir -p "$outdir"
    # Time and memory come from two runs: sampling /proc every 10 ms takes CPU from the command,
    # which would slow a run that keeps both cores busy.
    line=$(python3 "$here/peak_rss.py" --interval 0 --log "$work/$name.log" -- "$@")
    read -r wall ignored ignored cpu status ignored <<<"$(sed 's/[a-z_]*=//g' <<<"$line")"
    made=$({ find "$outdir" -maxdepth 1 -type f 2>/dev/null || true; } | wc -l)
    if [ "$memory" = 1 ]; then
        rm -rf "$outdir"
        [ "$make" = 1 ] && mkdir -p "$outdir"
        line=$(python3 "$here/peak_rss.py" --log "$work/$name.log" -- "$@")
        read -r ignored rss pss ignored ignored proc <<<"$(sed 's/[a-z_]*=//g' <<<"$line")"
        # The tree's peak PSS by default: every process maps the same libraries, and summed RSS
        # would count those pages once per process. BENCH_MEMORY=rss gives the summed RSS instead.
        if [ "${BENCH_MEMORY:-pss}" = rss ]; then peak=$rss; else peak=$pss; fi
        largest=$proc
    fi
    if [ "$status" != 0 ] || [ "$made" != "$expected" ]; then
        log "  warning: $name exited $status and made $made of $expected thumbnails (log: $(tail -n 3 "$work/$name.log" | tr '\n' ' '))"
    fi
    echo "$wall $cpu $peak $largest"
}

median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (a != "" && b > 0) printf "%.2f", a / b; else print "n/a" }'; }
verdict() { awk -v v="$1" -v t="$2" -v op="$3" 'BEGIN { if (v == "n/a") print "n/a"; else if ((op == "<=" && v <= t) || (op == ">=" && v >= t)) print "PASS"; else print "MISS" }'; }

load_at_start=$(cut -d' ' -f1-3 /proc/loadavg)
log "machine: $(nproc) cores, load $load_at_start, $(vips --version), vipsthumbnail concurrency ${VIPS_CONCURRENCY:-default}"
[ $peers_only = 0 ] && log "orvel-thumbs: $orvel ($("$orvel" --version 2>/dev/null | head -n 1 || echo "no --version"))"

# Every value lands in result[BATCH.COMMAND.{w,c,p,l}] (median wall, CPU, tree peak, largest process).
declare -A result
for batch in "${batch_list[@]}"; do
    src=$set_dir/$batch
    mapfile -t files < <(find "$src" -maxdepth 1 -type f ! -name '.*' | sort)
    n=${#files[@]}
    result[$batch.n]=$n
    [ "$n" = 0 ] && { log "warning: $src holds no files"; continue; }
    # orvel-thumbs walks the whole folder: anything else in it would be measured too.
    stray=$(find "$src" -mindepth 1 -maxdepth 1 -type d ! -name "$outname" | head -n 3)
    [ -n "$stray" ] && log "warning: $src holds folders that orvel-thumbs will also walk: $(tr '\n' ' ' <<<"$stray")"
    commands=()
    [ $peers_only = 0 ] && commands+=(orvel1 orvel2)
    read -r -a peers <<<"$(peers_of "$batch")"
    commands+=("${peers[@]}")
    declare -A samples=()
    for ((r = 1; r <= runs; r++)); do
        for cmd in "${commands[@]}"; do
            case $cmd in
                orvel1 | orvel2)
                    read -r w c p l < <(measure "$cmd-$batch-$r" "$src/$outname" 0 "$n" \
                        "$([ $cmd = orvel1 ] && echo 1 || echo 0)" \
                        "$orvel" --jobs "${cmd#orvel}" "${orvel_settings[@]}" "$src")
                    rm -rf "${src:?}/$outname" ;;
                *)
                    peer_argv "$cmd" "$work/out" "${files[@]}"
                    read -r w c p l < <(measure "$cmd-$batch-$r" "$work/out" 1 "$n" \
                        "$([ $cmd = vipsthumbnail ] || [ $cmd = gm ] && echo 1 || echo 0)" "${argv[@]}") ;;
            esac
            samples[$cmd.w]+=" $w" samples[$cmd.c]+=" $c" samples[$cmd.p]+=" $p" samples[$cmd.l]+=" $l"
            log "$batch run $r/$runs: $cmd ${w}s cpu ${c}s$([ "$l" != 0 ] && echo " peak ${p}MiB, largest process ${l}MiB")"
        done
    done
    for cmd in "${commands[@]}"; do
        for k in w c p l; do
            # shellcheck disable=SC2086 # the samples are split on purpose
            result[$batch.$cmd.$k]=$(median ${samples[$cmd.$k]})
        done
    done
    result[$batch.commands]="${commands[*]}"
done

# ---------------------------------------------------------------------------------------------
# Report: Markdown, ready to paste into bench/README.md.

label() {
    case $1 in
        jpeg24) echo "24-MP JPEG" ;;
        jpeg3) echo "3-MP JPEG" ;;
        png) echo "RGBA PNG" ;;
        pdf) echo "PDF" ;;
        ps) echo "PostScript/EPS" ;;
    esac
}
peer_label() {
    case $1 in
        gm) echo "GraphicsMagick \`mogrify -size $((2 * box))x$((2 * box)) -thumbnail\`" ;;
        djpeg) echo "\`djpeg -scale 1/8\` (decode floor)" ;;
        vipsthumbnail) echo "vipsthumbnail" ;;
        pdftoppm) echo "\`pdftoppm -scale-to $box\`, page 1" ;;
        gs) echo "Ghostscript alone, page 1 to JPEG" ;;
    esac
}
r() { echo "${result[$1]:-}"; }

echo
echo "orvel-thumbs against its peers: ${box}-pixel box, JPEG quality $quality, median of $runs runs$([ $quick = 1 ] && echo ", QUICK corpus (targets not meaningful)")."
echo "Corpus \`$set_dir\`. Machine: $(nproc) cores, load average $load_at_start at the start$(awk -v l="${load_at_start%% *}" -v n="$(nproc)" 'BEGIN { if (l > n / 2) print " (loaded: compare the CPU ratios)" }')."
echo
if [ $peers_only = 1 ]; then
    echo "| batch | files | program | wall s | CPU s | largest process MiB |"
    echo "|---|---:|---|---:|---:|---:|"
    for batch in "${batch_list[@]}"; do
        for cmd in ${result[$batch.commands]:-}; do
            echo "| $(label "$batch") | $(r "$batch.n") | $(peer_label "$cmd") | $(r "$batch.$cmd.w") | $(r "$batch.$cmd.c") | $(r "$batch.$cmd.l") |"
        done
    done
    exit 0
fi

echo "| batch | files | orvel s (CPU s) | peer | peer s (CPU s) | wall ratio | CPU ratio |"
echo "|---|---:|---:|---|---:|---:|---:|"
for batch in "${batch_list[@]}"; do
    for cmd in ${result[$batch.commands]:-}; do
        case $cmd in orvel1 | orvel2) continue ;; esac
        result[$batch.$cmd.wr]=$(ratio "$(r "$batch.orvel1.w")" "$(r "$batch.$cmd.w")")
        result[$batch.$cmd.cr]=$(ratio "$(r "$batch.orvel1.c")" "$(r "$batch.$cmd.c")")
        echo "| $(label "$batch") | $(r "$batch.n") | $(r "$batch.orvel1.w") ($(r "$batch.orvel1.c")) | $(peer_label "$cmd") | $(r "$batch.$cmd.w") ($(r "$batch.$cmd.c")) | $(r "$batch.$cmd.wr") | $(r "$batch.$cmd.cr") |"
    done
done
echo
echo "| batch | \`--jobs 2\` s | speed-up | worker peak MiB | vipsthumbnail MiB | ratio | tree peak ${BENCH_MEMORY:-pss} MiB |"
echo "|---|---:|---:|---:|---:|---:|---:|"
for batch in "${batch_list[@]}"; do
    [ -n "$(r "$batch.orvel1.w")" ] || continue
    result[$batch.su]=$(ratio "$(r "$batch.orvel1.w")" "$(r "$batch.orvel2.w")")
    result[$batch.mr]=$(ratio "$(r "$batch.orvel1.l")" "$(r "$batch.vipsthumbnail.l")")
    echo "| $(label "$batch") | $(r "$batch.orvel2.w") | $(r "$batch.su") | $(r "$batch.orvel1.l") | $(r "$batch.vipsthumbnail.l") | $(r "$batch.mr") | $(r "$batch.orvel1.p") |"
done
echo
echo "Targets (one job unless said otherwise; wall ratio, CPU ratio in brackets):"
echo
target() { # BATCH PEER LIMIT
    local w=${result[$1.$2.wr]:-n/a} c=${result[$1.$2.cr]:-n/a}
    [ "$w" = n/a ] && return
    echo "- $(label "$1") ≤ $3 × $(peer_label "$2"): $w ($c) $(verdict "$w" "$3" '<=')"
}
target jpeg24 gm 1.0
target jpeg24 djpeg 1.05
target jpeg3 gm 1.0
target png gm 1.0
target pdf pdftoppm 1.0
target ps gs 1.0
for batch in "${batch_list[@]}"; do
    [ -n "${result[$batch.su]:-}" ] && echo "- $(label "$batch") \`--jobs 2\` ≥ 1.8 × one job: ${result[$batch.su]} $(verdict "${result[$batch.su]}" 1.8 '>=')"
done
for batch in "${batch_list[@]}"; do
    [ "${result[$batch.mr]:-n/a}" != n/a ] && echo "- $(label "$batch") worker peak memory ≤ 1.0 × vipsthumbnail's: ${result[$batch.mr]} $(verdict "${result[$batch.mr]}" 1.0 '<=')"
done
exit 0
