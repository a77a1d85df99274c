#!/usr/bin/env bash
# Builds the Debian packages of Orvel Thumbnails on Debian 12 (installing what it needs):
#   orvel-thumbnails_<version>-1_<arch>.deb   the programs, the engine, desktop and thumbnailer data
#   liborvelkit-dev_<version>-1_<arch>.deb    the toolkit's headers, static libraries, CMake package
#                                             and pkg-config files
# and checks them with lintian.
# Usage: scripts/package.sh [output-dir [extra cmake arguments...]]   (default: dist/)
# ORVEL_BUILD_TYPE chooses the build type (default Release).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
out=$(mkdir -p "${1:-$top/dist}" && cd "${1:-$top/dist}" && pwd)
shift || true
build=$top/build-package

sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
missing=()
for p in dpkg-dev lintian fakeroot file; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
fi

ORVEL_BUILD_TYPE=${ORVEL_BUILD_TYPE:-Release} "$top/scripts/setup.sh" "$build" -DCMAKE_INSTALL_PREFIX=/usr \
  -DORVEL_BUILD_TESTS=OFF -DORVEL_BUILD_BENCH=OFF "$@"
rm -f "$out"/orvel-thumbnails_*.deb "$out"/liborvelkit-dev_*.deb
(cd "$build" && cpack -G DEB -B "$out" >&2)
rm -rf "$out/_CPack_Packages"

status=0
for deb in "$out"/*.deb; do
  echo "lintian $(basename "$deb")" >&2
  # Errors fail the build; warnings are shown.
  lintian --fail-on error --suppress-tags no-manual-page "$deb" >&2 || status=1
done
ls "$out"/*.deb
exit $status
