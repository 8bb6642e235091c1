#!/usr/bin/env bash
# Pictures of Korvane's main window, its list across formats, its details pane and the secondary
# windows on a fresh demo library (with LV2 and VST 3 copies of some of its plug-ins), as PNG files
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

screen="$(mktemp --suffix=.json)"
trap 'rm -f "$screen"' EXIT

# Each run on a fresh library: the runs change it (an emptied tab, applied sets).
run() { # [VAR=VALUE ...] -- [VARIANT]
  local vars=()
  while [ "$1" != -- ]; do
    vars+=("$1")
    shift
  done
  shift
  local dir
  dir="$(demo_library "$demo" shots)"
  env QT_QPA_PLATFORM=offscreen KORVANE_RESOURCES="$top/resources" LANGUAGE=en LC_ALL=C.UTF-8 \
    "${vars[@]}" "$shots" "$dir" "$top/docs/screenshots" "$@"
  rm -rf "$dir"
}
run --
run -- dark
# A 1600x1000 screen at a scale factor of 2 leaves the window 800x500 points.
cat >"$screen" <<'EOF'
{"screens": [{"name": "Screen", "x": 0, "y": 0, "width": 1600, "height": 1000,
              "logicalDpiX": 96, "logicalDpiY": 96, "dpr": 1}]}
EOF
run QT_QPA_PLATFORM="offscreen:configfile=$screen" QT_SCALE_FACTOR=2 -- scale2
run LANGUAGE=de LC_ALL=de_DE.UTF-8 -- german
# The table's columns on Debian's own LV2 bundles, copied into the demo's root.
run -- linux
ls "$top/docs/screenshots"/*.png
