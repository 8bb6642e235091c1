#!/usr/bin/env bash
# Fails when an include breaks the layers: a quoted include that climbs out of its folder
# ("../x.h" resolves next to the including file, around the include paths that keep each layer
# from seeing the ones above it), a layer of src/ that names a layer above it, or a file outside
# src/gui that includes QtGui or QtWidgets.
set -euo pipefail
cd "$(dirname "$0")/.."

failed=0
fail() {
  echo "$1" >&2
  failed=1
}

mapfile -t files < <(git ls-files -- '*.cpp' '*.h')

# Nothing climbs out: every include is found through the include paths.
while IFS= read -r hit; do
  fail "climbs out of its folder: $hit"
done < <(grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*["<][^">]*\.\.' "${files[@]}" || true)

# Each layer names only itself and the layers below it.
declare -A allowed=(
  [os]="os"
  [codec]="codec os"
  [core]="core codec os"
  [library]="library core codec os"
  [app]="app library helper core codec os"
  [cli]="cli app library core codec os probe"
  [gui]="gui app library core codec os"
  [probe]="probe"
)
for layer in "${!allowed[@]}"; do
  while IFS= read -r hit; do
    target=$(sed -E 's/.*#[[:space:]]*include[[:space:]]*"([a-z]+)\/.*/\1/' <<<"${hit#*:*:}")
    if [[ " ${allowed[$layer]} " != *" $target "* ]]; then
      fail "src/$layer may not include $target/: $hit"
    fi
  done < <(grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"[a-z]+/' "src/$layer" || true)
done

# Only the windows use QtGui and QtWidgets: their module includes, and any header of theirs.
headers=$(qtpaths6 --query QT_INSTALL_HEADERS 2>/dev/null || echo /usr/include/x86_64-linux-gnu/qt6)
declare -A gui_header=()
for module in QtGui QtWidgets; do
  gui_header[$module]=1
  for path in "$headers/$module"/Q*; do
    [ -e "$path" ] && gui_header[${path##*/}]=1
  done
done
for path in "$headers"/QtCore/Q* "$headers"/QtNetwork/Q*; do
  unset "gui_header[${path##*/}]" 2>/dev/null || true
done
while IFS= read -r hit; do
  header=$(sed -E 's/.*#[[:space:]]*include[[:space:]]*<(Qt(Gui|Widgets)\/)?([A-Za-z]+)>.*/\3/' <<<"${hit#*:*:}")
  if [[ "$hit" =~ \<Qt(Gui|Widgets)/ ]] || [ -n "${gui_header[$header]:-}" ]; then
    fail "only src/gui uses QtGui and QtWidgets: $hit"
  fi
done < <(git ls-files -- 'src/*.cpp' 'src/*.h' ':!src/gui' \
  | xargs grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*<Q' || true)

exit $failed
