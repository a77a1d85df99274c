#!/usr/bin/env bash
# Installs the build tree into a temporary prefix, then builds the example programs against the
# installed toolkit alone (CMake package and pkg-config), and runs them.
# Usage: installed-toolkit.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" --component devel >/dev/null
# Nothing of the build or source tree may be reachable from here on: only the prefix is named.
cmake -S "$source/examples" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/build" >/dev/null

mkdir "$work/folder"
touch "$work/folder/Holiday-1.JPG" "$work/folder/holiday-2.jpg" "$work/folder/notes.txt"
listed=$("$work/build/matching-files" "$work/folder" 'holiday-*.jpg' | sort | tr '\n' ' ')
[ "$listed" = "Holiday-1.JPG holiday-2.jpg " ] || { echo "matching-files listed: $listed" >&2; exit 1; }

vips black "$work/picture.png" 400 200 --bands 3
"$work/build/make-thumbnail" "$work/picture.png" "$work/thumb.png" 64
size=$(vipsheader -f width "$work/thumb.png")x$(vipsheader -f height "$work/thumb.png")
[ "$size" = 64x32 ] || { echo "make-thumbnail made $size, not 64x32" >&2; exit 1; }
if "$work/build/make-thumbnail" "$work/folder/notes.txt" "$work/none.png" 64 2>/dev/null; then
  echo "make-thumbnail accepted a text file" >&2; exit 1
fi

# pkg-config: the same program compiled by hand from the .pc files.
export PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name orvelkit-files.pc)")
# shellcheck disable=SC2046
g++ -std=c++20 -fPIC -o "$work/matching-files-pc" "$source/examples/matching-files.cpp" \
  $(pkg-config --cflags --libs orvelkit-files)
listed=$("$work/matching-files-pc" "$work/folder" '*.TXT')
[ "$listed" = notes.txt ] || { echo "pkg-config build listed: $listed" >&2; exit 1; }
echo "examples built and ran against $prefix"
