#!/usr/bin/env bash
# Builds Orvel Thumbnails if needed (installing what it needs) and makes thumbnails of the given paths.
# Usage: scripts/thumbs.sh [orvel-thumbs options] PATH...
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh" "$top/build" -DORVEL_BUILD_TESTS=OFF >/dev/null 2>"$top/build.log" || { cat "$top/build.log" >&2; exit 3; }
exec "$top/build/src/app/orvel-thumbs" "$@"
