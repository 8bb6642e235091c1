#!/usr/bin/env bash
# Installs the Debian packages Korvane builds with, when any is missing.
set -euo pipefail
packages=(cmake g++ make pkg-config qt6-base-dev libplist-dev libgtest-dev libgmock-dev e2fsprogs attr ccache
  libxml2-utils polkitd                                # the polkit policy and its DTD
  clang libclang-rt-dev                                # the fuzzing harnesses (libFuzzer)
  clang-format                                         # the committed code style, checked in CI
  desktop-file-utils appstream librsvg2-bin groff-base  # checks of the desktop files and man page
  fonts-dejavu-core)                                   # text in offscreen window pictures
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi
