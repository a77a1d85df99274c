#!/usr/bin/env bash
# Takes a screenshot of the preferences panel, shown by a plain launch of the desktop application
# on a virtual X display (Xvfb), with the default settings.
# Usage: scripts/screenshots.sh [LANGUAGE]     (default en; writes docs/panel-LANGUAGE.png)
# The language reaches the application through LANGUAGE and, when such a locale is installed, LC_ALL.
# Set ORVEL_BUILD to use an existing build folder instead of building into build/.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
lang=${1:-en}
build=${ORVEL_BUILD:-}
if [ -z "$build" ]; then
  build=$top/build
  "$top/scripts/setup.sh" "$build" -DORVEL_BUILD_TESTS=OFF >/dev/null 2>"$top/build.log" || { cat "$top/build.log" >&2; exit 3; }
fi
app=$build/src/app/orvel-thumbnails
for tool in xvfb-run import; do
  command -v "$tool" >/dev/null || { echo "screenshots.sh: $tool is missing (packages xvfb, imagemagick)" >&2; exit 3; }
done

locale=$(locale -a 2>/dev/null | grep -i -m1 "^${lang}_.*utf-\?8$" || true)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/config" "$work/cache" "$work/runtime" "$top/docs"
chmod 700 "$work/runtime"
out=$top/docs/panel-$lang.png

# Inside the virtual display: start the panel, wait until it is drawn, take the screen, trim the
# empty background around the window.
cat > "$work/shoot.sh" <<'INNER'
#!/usr/bin/env bash
set -euo pipefail
"$APP" &
pid=$!
for _ in $(seq 1 50); do
  sleep 0.2
  if import -window root "$WORK/screen.png" 2>/dev/null \
      && [ "$(convert "$WORK/screen.png" -format '%[fx:maxima.r>0||maxima.g>0||maxima.b>0]' info:)" = 1 ]; then
    break
  fi
done
sleep 1
import -window root "$WORK/screen.png"
kill "$pid"
wait "$pid" 2>/dev/null || true
convert "$WORK/screen.png" -trim +repage "$OUT"
INNER
chmod +x "$work/shoot.sh"

env -u DBUS_SESSION_BUS_ADDRESS -u QT_QPA_PLATFORM \
  APP="$app" WORK="$work" OUT="$out" \
  XDG_CONFIG_HOME="$work/config" XDG_CACHE_HOME="$work/cache" XDG_RUNTIME_DIR="$work/runtime" \
  LANGUAGE="$lang" ${locale:+LC_ALL="$locale"} \
  xvfb-run -a -s "-screen 0 1280x1024x24" "$work/shoot.sh"
echo "$out"
