#!/usr/bin/env bash
# Pictures of Korvane's main window and secondary windows on a fresh demo library, as PNG files
# under docs/screenshots/. Rendered on Qt's offscreen platform: no display is needed. Builds nothing:
# give it the build folder, e.g.
#   cmake --preset default && cmake --build --preset default && tools/screenshots.sh build
set -euo pipefail

top="$(cd "$(dirname "$0")/.." && pwd)"
. "$top/tools/lib/build.sh"
build="$(find_build "${1:-}")"
demo="$build/tools/korvane_demo"
shots="$build/tools/korvane_window_shots"
need_programs screenshots.sh "$demo" "$shots"

dir="$(demo_library "$demo" shots)"
trap 'rm -rf "$dir"' EXIT
QT_QPA_PLATFORM=offscreen KORVANE_RESOURCES="$top/resources" "$shots" "$dir" "$top/docs/screenshots"
ls "$top/docs/screenshots"/*.png
