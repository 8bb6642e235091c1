#!/usr/bin/env bash
# Installs the Debian packages Korvane builds with, when any is missing.
set -euo pipefail
packages=(cmake g++ make pkg-config qt6-base-dev libplist-dev libgtest-dev libgmock-dev e2fsprogs attr ccache
  libxml2-utils polkitd                                # the polkit policy and its DTD
  clang libclang-rt-dev                                # the fuzzing harnesses (libFuzzer)
  clang-format                                         # the committed code style, checked in CI
  ninja-build clang-tidy                               # the dev preset: Ninja, the committed .clang-tidy
  qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools     # lupdate, lrelease and their CMake package
  qt6-translations-l10n                                # Qt's own texts in the user's language
  desktop-file-utils appstream librsvg2-bin groff-base  # checks of the desktop files and man page
  fonts-dejavu-core                                    # text in offscreen window pictures
  libarchive-dev                                       # backup archives (tar with xz)
  xvfb xdotool imagemagick                             # the real window driven in tools/gui-e2e.sh
  xclip                                                # gui-e2e.sh reads the table's copied rows
  libserd-dev                                          # reads LV2's Turtle files
  ladspa-sdk dssi-dev                                  # ladspa.h and dssi.h for the probe; listplugins
  lilv-utils                                           # lv2ls, against which the LV2 reader is checked
  x42-plugins lsp-plugins-lv2 swh-plugins swh-lv2      # real Linux plug-ins the tests copy
  dssi-example-plugins dpf-plugins-vst dpf-plugins-lv2 dpf-plugins-ladspa
  ansible-core                                         # the Ansible collection and its tests
  pycodestyle yamllint                                 # the collection's pep8 and yamllint, offline
)
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
