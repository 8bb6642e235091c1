#!/usr/bin/env bash
# Pictures of Korvane's secondary windows on a fresh demo library, as PNG files under
# docs/screenshots/. Rendered on Qt's offscreen platform: no display is needed. Builds nothing:
# give it the build folder, e.g.
#   cmake --preset default && cmake --build --preset default && tools/screenshots-windows.sh build
set -euo pipefail

top="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-build}"
if [ ! -d "$build" ] && [ -d "$top/$build" ]; then
  build="$top/$build"
fi
demo="$build/tools/korvane_demo"
shots="$build/tools/korvane_window_shots"
for program in "$demo" "$shots"; do
  if [ ! -x "$program" ]; then
    echo "screenshots-windows.sh: $program not found; build first:" >&2
    echo "  cmake --preset default && cmake --build --preset default" >&2
    exit 1
  fi
done

dir="$(mktemp -d "${TMPDIR:-/tmp}/korvane-shots.XXXXXX")"
trap 'rm -rf "$dir"' EXIT
"$demo" "$dir" >/dev/null
QT_QPA_PLATFORM=offscreen KORVANE_RESOURCES="$top/resources" "$shots" "$dir" "$top/docs/screenshots"
ls "$top/docs/screenshots"/*.png
