#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (AddressSanitizer and UndefinedBehaviorSanitizer on) and
# runs each for a while from a seed corpus of small valid files made here.
# Usage: scripts/fuzz.sh [SECONDS-PER-TARGET] [TARGET...]   (default 60 seconds, every target)
# A crash, a leak-free hang past the time limit or an out-of-memory stops that target; its input is
# kept in build-fuzz/findings/TARGET/ and the script exits 1.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=$top/build-fuzz
seconds=${1:-60}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(fuzz_image_data fuzz_movie_file fuzz_date_text fuzz_url_text fuzz_settings_text fuzz_postscript fuzz_vcard fuzz_resource_fork fuzz_apple_double fuzz_location_file fuzz_zip_extraction)

# The libraries come with a normal build's packages (scripts/setup.sh); libFuzzer with clang.
pkg-config --exists vips-cpp poppler-qt6 libavformat || { echo "run scripts/setup.sh once first" >&2; exit 2; }
if ! command -v clang++ >/dev/null; then
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends clang >&2
fi

CC=clang CXX=clang++ cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DORVEL_BUILD_FUZZERS=ON -DORVEL_SANITIZE=ON -DORVEL_BUILD_TESTS=OFF -DORVEL_BUILD_BENCH=OFF >&2
cmake --build "$build" -j"$(nproc)" --target "${targets[@]}" >&2

# Seeds: one small valid file of each kind the targets read, made fresh from fixed recipes.
seeds=$build/seeds
if [ ! -f "$seeds/.complete" ]; then
  rm -rf "$seeds"
  mkdir -p "$seeds"/{fuzz_image_data,fuzz_movie_file,fuzz_date_text,fuzz_settings_text,fuzz_postscript}
  t=$(mktemp -d)
  vips black "$t/b.v" 24 16 --bands 3
  vips linear "$t/b.v" "$t/c.v" 1 "40 120 200" --uchar
  for format in jpg png gif tif webp heif jp2 pnm; do
    vips copy "$t/c.v" "$seeds/fuzz_image_data/seed.$format" 2>/dev/null || true
  done
  vips bandjoin_const "$t/c.v" "$t/a.v" 128
  vips copy "$t/a.v" "$seeds/fuzz_image_data/alpha.png"
  printf '<svg xmlns="http://www.w3.org/2000/svg" width="20" height="10"><rect width="20" height="10" fill="red"/></svg>' \
    >"$seeds/fuzz_image_data/seed.svg"
  printf '%%!PS-Adobe-3.0 EPSF-3.0\n%%%%BoundingBox: 0 0 20 10\n1 0 0 setrgbcolor 0 0 20 10 rectfill\nshowpage\n' \
    >"$seeds/fuzz_postscript/seed.eps"
  gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -sOutputFile="$seeds/fuzz_image_data/seed.pdf" \
    "$seeds/fuzz_postscript/seed.eps"
  ffmpeg -nostdin -v error -f lavfi -i "testsrc2=s=32x24:r=5:d=1" -c:v mpeg4 "$seeds/fuzz_movie_file/seed.avi"
  ffmpeg -nostdin -v error -f lavfi -i "testsrc2=s=32x24:r=5:d=1" -c:v libx264 -pix_fmt yuv420p "$seeds/fuzz_movie_file/seed.mp4"
  ffmpeg -nostdin -v error -f lavfi -i "testsrc2=s=32x24:r=5:d=1" -c:v libvpx-vp9 "$seeds/fuzz_movie_file/seed.webm"
  i=0
  for text in "Sun, 06 Nov 1994 08:49:37 GMT" "Sunday, 06-Nov-94 08:49:37 GMT" "Sun Nov  6 08:49:37 1994" \
    "2026-11-22 10:30:00 +0100" "next tuesday at noon" "D:20261122103000+01'00'" \
    "$(printf '%%Y-%%m-%%d %%H:%%M\n2026-11-22 10:30')"; do
    i=$((i + 1))
    printf '%s' "$text" >"$seeds/fuzz_date_text/seed-$i"
  done
  printf 'width = 128\nquality = 0.8\nextension = "_thumb"\nQuitWhenDone = true\nlist = [1, "two", 3.5]\n"quoted key" = "a \\"b\\"\\n"\n' \
    >"$seeds/fuzz_settings_text/seed.conf"
  rm -rf "$t"
  touch "$seeds/.complete"
fi
# A Mac's 3.0 card and an Outlook-style 2.1 card (seeded apart, so older seed folders get it too).
if [ ! -f "$seeds/fuzz_vcard/seed.vcf" ]; then
  mkdir -p "$seeds/fuzz_vcard"
  printf 'BEGIN:VCARD\r\nVERSION:3.0\r\nN:Holt;Mara;Jo;;\r\nFN:Mara Holt\r\nORG:Widgets\\, Inc.;Research\r\nitem1.EMAIL;type=INTERNET;type=pref:mara@widgets.example\r\nitem1.X-ABLabel:_$!<Other>!$_\r\nTEL;TYPE="cell,voice":+1 555 0100\r\nADR;type=HOME:;;1 Main St\\nApt 2;Springfield;IL;62701;USA\r\nNOTE:a long no\r\n te\r\nPHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQ\r\nX-ABShowAs:COMPANY\r\nEND:VCARD\r\nBEGIN:VCARD\r\nVERSION:2.1\r\nN;CHARSET=Windows-1252;ENCODING=QUOTED-PRINTABLE:M=FCller;G=FCnter\r\nNOTE;QUOTED-PRINTABLE:one=0D=0A=\r\ntwo\r\nTEL;CELL;PREF:+49 170 1\r\nEND:VCARD\r\n' \
    >"$seeds/fuzz_vcard/seed.vcf"
fi
# Links as found on result pages: the page's address, a newline, the link.
if [ ! -d "$seeds/fuzz_url_text" ]; then
  mkdir -p "$seeds/fuzz_url_text"
  i=0
  for text in "https://www.google.com/search?q=x
/url?q=https://x.org/p%3Fa%3D1&sa=U" "https://search.yahoo.com/search?p=x
https://r.search.yahoo.com/_ylt=A/RU=https%3a%2f%2fx.org%2f/RK=2" \
    "http://a.org/
hhttp://A.org//x/./index.html?PHPSESSID=ab12&utm_source=n&k=#top" "file:///tmp/p.html
../a b/%22x%22.html" "https://www.dogpile.com/
/ClickHandler.ashx?ru=https%3a%2f%2fx.org&du=1"; do
    i=$((i + 1))
    printf '%s' "$text" >"$seeds/fuzz_url_text/seed-$i"
  done
fi

# A web location's fork ('drag' 128, 'TEXT' 256, 'url ' 256, one named) and the companion file a
# Mac writes beside it on a foreign volume (Finder info with its attribute block, then the fork).
if [ ! -d "$seeds/fuzz_apple_double" ]; then
  mkdir -p "$seeds/fuzz_resource_fork" "$seeds/fuzz_apple_double"
  python3 - "$seeds" <<'PY'
import struct, sys
seeds = sys.argv[1]
url = b"https://example.org/"
drag = struct.pack(">Q18xH4x", 1, 2) + b"".join(t + struct.pack(">2xH16x", 256) for t in (b"TEXT", b"url "))
resources = [(b"drag", 128, drag, b""), (b"TEXT", 256, url, b"Link"), (b"url ", 256, url, b"")]
data, types, refs, names = b"", b"", b"", b""
for t, rid, body, name in resources:
    types += t + struct.pack(">HH", 0, 2 + 8 * len(resources) + len(refs))
    noff = 0xFFFF
    if name:
        noff, names = len(names), names + bytes([len(name)]) + name
    refs += struct.pack(">hHB", rid, noff, 0) + len(data).to_bytes(3, "big") + b"\0" * 4
    data += struct.pack(">I", len(body)) + body
tl = struct.pack(">H", len(resources) - 1) + types + refs
maplen = 28 + len(tl) + len(names)
head = struct.pack(">IIII", 256, 256 + len(data), len(data), maplen)
fork = head + bytes(240) + data + head + bytes(6) + struct.pack(">HHH", 0, 28, 28 + len(tl)) + tl + names
open(seeds + "/fuzz_resource_fork/weblocation.rsrc", "wb").write(fork)
info = b"ilhtMACS" + struct.pack(">H", 0x0400) + bytes(22) + bytes(2) + b"ATTR" + bytes(60)
ad = struct.pack(">II16sH", 0x00051607, 0x00020000, b"Mac OS X        ", 2)
ad += struct.pack(">III", 9, 50, len(info)) + struct.pack(">III", 2, 50 + len(info), len(fork)) + info + fork
open(seeds + "/fuzz_apple_double/weblocation.ad", "wb").write(ad)
PY
fi

# Location files of each kind, and small zip archives: one plain, one with a fork in "__MACOSX"
# and a link, one that tries to leave its folder.
if [ ! -d "$seeds/fuzz_zip_extraction" ]; then
  mkdir -p "$seeds/fuzz_location_file" "$seeds/fuzz_zip_extraction"
  python3 - "$seeds" <<'PY'
import plistlib, sys, zipfile
seeds = sys.argv[1]
loc = seeds + "/fuzz_location_file/"
open(loc + "xml.webloc", "wb").write(plistlib.dumps({"URL": "https://example.org/"}))
open(loc + "binary.webloc", "wb").write(plistlib.dumps({"URL": "mailto:a@example.org"}, fmt=plistlib.FMT_BINARY))
open(loc + "shortcut.url", "wb").write(b"[InternetShortcut]\r\nURL=https://example.org/\r\n")
open(loc + "link.desktop", "wb").write(b"[Desktop Entry]\nType=Link\nName=x\nURL=https://example.org/a\\sb\n")
z = seeds + "/fuzz_zip_extraction/"
with zipfile.ZipFile(z + "plain.zip", "w", zipfile.ZIP_DEFLATED) as f:
    f.writestr("a/b.txt", "hello " * 40)
    f.writestr("a/", "")
with zipfile.ZipFile(z + "fork.zip", "w", zipfile.ZIP_DEFLATED) as f:
    f.writestr("Link.webloc", plistlib.dumps({"URL": "https://example.org/"}))
    info = b"ilhtMACS" + bytes(24)
    ad = bytes.fromhex("0005160700020000") + bytes(16) + (1).to_bytes(2, "big")
    ad += (9).to_bytes(4, "big") + (38).to_bytes(4, "big") + (32).to_bytes(4, "big") + info
    f.writestr("__MACOSX/._Link.webloc", ad)
    i = zipfile.ZipInfo("here")
    i.create_system, i.external_attr = 3, 0o120777 << 16
    f.writestr(i, "Link.webloc")
with zipfile.ZipFile(z + "escape.zip", "w") as f:
    f.writestr("../out.txt", "x")
PY
fi

export ASAN_OPTIONS="halt_on_error=1:detect_leaks=0:abort_on_error=1:allocator_may_return_null=1"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:suppressions=$top/scripts/ubsan.supp"
failed=0
for target in "${targets[@]}"; do
  corpus=$build/corpus/$target
  findings=$build/findings/$target
  mkdir -p "$corpus" "$findings"
  echo "fuzzing $target for ${seconds}s" >&2
  if ! "$build/fuzz/$target" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=3072 -max_len=65536 \
    -artifact_prefix="$findings/" -print_final_stats=1 "$corpus" "$seeds/$target" >"$build/$target.log" 2>&1; then
    echo "$target: FOUND A FAULT (input and log in $findings/, $build/$target.log)" >&2
    tail -n 30 "$build/$target.log" >&2
    failed=1
  else
    grep -E "stat::number_of_executed_runs|cov:" "$build/$target.log" | tail -n 2 >&2 || true
  fi
done
exit $failed
