#!/usr/bin/env bash
# Shows KorvaneCMD at work on a demo plug-in library in a fresh temporary folder.
# Builds nothing: give it the build folder, e.g.
#   cmake --preset default && cmake --build --preset default && tools/demo.sh build
set -euo pipefail

. "$(dirname "$0")/lib/build.sh"
build="$(find_build "${1:-}")"
demo="$build/tools/korvane_demo"
cmd="$build/src/KorvaneCMD"
need_programs demo.sh "$demo" "$cmd"

dir="$(demo_library "$demo" demo)"
R="$dir/root"
H="$dir/home"

show() {
  echo
  echo "\$ KorvaneCMD $*" | sed "s|$R|R|g; s|$H|H|g"
  "$cmd" "$@"
}

echo "Demo library in $dir (R = system root, H = home):"
show --root "$R" --home "$H" list
show --root "$R" --home "$H" -AU "$H/Documents/Live.aukorv"
show --root "$R" --home "$H" list --format au
echo
echo "The library stays in $dir for you to try more (KorvaneCMD --help)."
