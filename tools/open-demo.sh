#!/usr/bin/env bash
# Opens Korvane's window on a freshly generated demo plug-in library in a temporary folder. Where
# no display is available it says so and shows the command-line tool on the demo instead
# (tools/demo.sh). Builds nothing: give it the build folder, e.g.
#   cmake --preset default && cmake --build --preset default && tools/open-demo.sh build
set -euo pipefail

here="$(dirname "$0")"
. "$here/lib/build.sh"
build="$(find_build "${1:-}")"
korvane="$build/src/gui/korvane"
demo="$build/tools/korvane_demo"

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "open-demo.sh: no display here (neither DISPLAY nor WAYLAND_DISPLAY is set)," \
    "so the window cannot open; showing the command-line demo instead."
  exec "$here/demo.sh" "$build"
fi
need_programs open-demo.sh "$korvane" "$demo"

dir="$(demo_library "$demo" demo)"
echo "Demo library in $dir; opening Korvane on it:"
echo "  $korvane --root $dir/root --home $dir/home"
# What the toolkit itself keeps (file dialog state, caches) stays in the demo folder as well.
XDG_CONFIG_HOME="$dir/config" XDG_CACHE_HOME="$dir/cache" \
  exec "$korvane" --root "$dir/root" --home "$dir/home"
