#!/usr/bin/env bash
# Installs the Debian packages Orvel Thumbnails needs (when missing) and builds it.
# Usage: scripts/setup.sh [build-dir] [extra cmake arguments...]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$top/build}
shift || true

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev libvips-dev libjpeg62-turbo-dev libpng-dev libpoppler-qt6-dev ghostscript
  libgtest-dev libgmock-dev libbenchmark-dev
  libvips-tools time graphicsmagick poppler-utils libjpeg-turbo-progs
  libavformat-dev libavcodec-dev libswscale-dev libavutil-dev ffmpeg ffmpegthumbnailer
  qt6-tools-dev qt6-l10n-tools
  qt6-translations-l10n
  desktop-file-utils appstream dbus-daemon xvfb xauth imagemagick
  clang-format groff-base
  python3-vobject
  shared-mime-info bubblewrap zsh
  cron systemd libglib2.0-bin
  libarchive-dev zip unzip rsync
  libplist-dev attr
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}" >&2
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
fi

cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=${ORVEL_BUILD_TYPE:-RelWithDebInfo} "$@" >&2
cmake --build "$build" -j"$(nproc)" >&2
