#!/usr/bin/env bash
# Drives the real window as a person would: korvane on a fresh demo library under Xvfb, keyboard
# and mouse through xdotool, results checked on disk, pictures saved as PNG. Builds nothing:
#   tools/gui-e2e.sh BUILD [PICTURES]     (PICTURES: default BUILD/gui-e2e)
# Needs Xvfb, xdotool and ImageMagick, and xclip for the Linux columns' check (tools/setup.sh
# installs them).
set -euo pipefail

top="$(cd "$(dirname "$0")/.." && pwd)"
. "$top/tools/lib/build.sh"
build="$(find_build "${1:-}")"
shots="${2:-$build/gui-e2e}"
korvane="$build/src/gui/korvane"
demo="$build/tools/korvane_demo"
need_programs gui-e2e.sh "$korvane" "$demo"
for tool in Xvfb xdotool import compare; do
  if ! command -v "$tool" >/dev/null; then
    echo "gui-e2e.sh: $tool not found; run tools/setup.sh" >&2
    exit 1
  fi
done
mkdir -p "$shots"
shots="$(cd "$shots" && pwd)"

dir="$(demo_library "$demo" e2e)"
xvfb=""
app=""
silent=""
cleanup() {
  chattr -i "${H:-/nonexistent}/Documents" 2>/dev/null || true
  [ -n "$silent" ] && kill "$silent" 2>/dev/null || true
  chattr -i "${H:-/nonexistent}/Library/Preferences" 2>/dev/null || true
  [ -n "$app" ] && kill "$app" 2>/dev/null || true
  [ -n "$xvfb" ] && kill "$xvfb" 2>/dev/null || true
  rm -rf "$dir"
}
trap cleanup EXIT

R="$dir/root"
H="$dir/home"
support="$H/Library/Application Support/Korvane"
prefs="$H/Library/Preferences/com.velmora.Korvane.plist"
components="$R/Library/Audio/Plug-Ins/Components"

# A display of its own: Xvfb picks a free number and writes it to the file. -noreset: without it
# the server resets whenever its last client leaves, and a korvane started during the reset
# cannot connect.
Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp -noreset 3>"$dir/display" 2>"$dir/xvfb.log" &
xvfb=$!
for _ in $(seq 50); do
  [ -s "$dir/display" ] && break
  sleep 0.1
done
export DISPLAY=":$(cat "$dir/display")"

failures=0
pass() { echo "ok   - $*"; }
fail() {
  echo "FAIL - $*"
  failures=$((failures + 1))
}
shot() { # name [window]
  import -window "${2:-root}" "$shots/$1.png"
  echo "     picture $shots/$1.png"
}
# Pixels that differ between two pictures of the main window's menu and tab bar.
tabbar_diff() {
  compare -metric AE -crop 1090x60+0+0 "$shots/$1.png" "$shots/$2.png" null: 2>&1 || true
}
# Pixels that differ between two pictures' bottom strip, where the list's status line sits.
status_diff() {
  local height
  height=$(identify -format %h "$shots/$1.png")
  compare -metric AE -crop "700x26+0+$((height - 26))" "$shots/$1.png" "$shots/$2.png" null: 2>&1 || true
}
plist_value() { # key: the value element after it in the preferences file
  tr -d '\n\t ' <"$prefs" | sed -n "s|.*<key>$1</key><\([a-z]*\)/>.*|\1|p"
}
wait_for_window() { # title
  for _ in $(seq 100); do
    w=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n 1 || true)
    if [ -n "$w" ]; then
      echo "$w"
      return 0
    fi
    sleep 0.1
  done
  return 1
}
focus() {
  xdotool windowfocus --sync "$1" 2>/dev/null || xdotool windowfocus "$1"
  sleep 0.3
}
keys() {
  xdotool key --delay 80 "$@"
  sleep 0.5
}
# Ctrl+Q to the focused window; the program must end within five seconds. prefix: for the message.
# Starts korvane on a library, everything it writes kept in the demo's folders, its output added
# to korvane.log; app is its pid. launch ROOT HOME STATE [env's options or VAR=value ...]
launch() {
  local root=$1 home=$2 state=$3
  shift 3
  mkdir -p "$dir/runtime" && chmod 700 "$dir/runtime"
  env "$@" HOME="$home" XDG_CONFIG_HOME="$state/config" XDG_CACHE_HOME="$state/cache" \
    XDG_RUNTIME_DIR="$dir/runtime" QT_QPA_PLATFORM=xcb \
    "$korvane" --root "$root" --home "$home" >>"$dir/korvane.log" 2>&1 &
  app=$!
}

quit_with_ctrl_q() {
  keys ctrl+q
  for _ in $(seq 50); do
    kill -0 "$app" 2>/dev/null || break
    sleep 0.1
  done
  kill -0 "$app" 2>/dev/null && fail "${1}korvane still runs after Ctrl+Q" || app=""
}

# An update server on the loopback that takes the request and never answers.
python3 - "$dir/update-port" <<'EOF' &
import os, socket, sys
server = socket.socket()
server.bind(("127.0.0.1", 0))
server.listen(8)
with open(sys.argv[1] + ".new", "w") as out:
    out.write(str(server.getsockname()[1]))
os.rename(sys.argv[1] + ".new", sys.argv[1])
held = []
while True:
    held.append(server.accept()[0])
EOF
silent=$!
for _ in $(seq 50); do
  [ -s "$dir/update-port" ] && break
  sleep 0.1
done

# Everything the program writes stays in the demo's folders.
launch "$R" "$H" "$dir" KORVANE_UPDATE_URL="http://127.0.0.1:$(cat "$dir/update-port")/versions.plist"

if main=$(wait_for_window Korvane); then
  pass "the window opened"
else
  fail "no window titled Korvane"
  cat "$dir/korvane.log"
  exit 1
fi
sleep 1.5 # the first scan, once the event loop runs
focus "$main"
shot start "$main"

# Untick Delta Delay and apply: it must land in the disabled folder.
keys ctrl+f
xdotool type --delay 60 "Delta Delay"
sleep 0.5
keys Tab Home space
shot unticked "$main"
keys alt+a
sleep 1.5
shot applied "$main"
if [ -e "$components (Disabled)/Delta Delay.component" ] && [ ! -e "$components/Delta Delay.component" ]; then
  pass "Delta Delay was moved into \"Components (Disabled)\""
else
  fail "Delta Delay is not in \"Components (Disabled)\""
fi
focus "$main"
keys ctrl+f ctrl+a BackSpace

# Check for Update against a server that never answers: a panel with Cancel, and the window
# goes on working meanwhile (it used to freeze for the whole time-out).
keys alt+h Return
if panel=$(wait_for_window "Update check"); then
  pass "Check for Update shows a panel while it waits"
  focus "$main"
  keys ctrl+f
  xdotool type --delay 60 "Ember"
  sleep 0.5
  shot update-check-waiting root
  focus "$panel"
  keys Escape
  sleep 0.5
  if xdotool search --onlyvisible --name '^Update check$' >/dev/null 2>&1; then
    fail "Cancel did not close the update panel"
  else
    pass "Cancel ended the update check"
  fi
else
  fail "Check for Update showed no panel"
fi
focus "$main"
keys ctrl+f ctrl+a BackSpace

# All Off with a search active switches off only the rows shown; the status line says what Apply
# will do before anyone presses it.
keys ctrl+f
xdotool type --delay 60 "Cinder"
sleep 0.5
keys alt+p Down Return
sleep 0.5
shot filtered-all-off "$main"
keys alt+a
sleep 1.5
if [ -e "$components (Disabled)/Cinder Reverb.component" ] \
  && [ -e "$components/Aurora Synth.component" ] && [ -e "$components/Basalt Compressor.component" ]; then
  pass "All Off with a search switched off only the row shown"
else
  fail "All Off with a search reached rows the search hid"
fi
focus "$main"
keys ctrl+f ctrl+a BackSpace

# The keyboard path: the search, Tab into the table (one stop), Space on the selected row,
# Shift+Tab straight back out to the search, and again; Apply moves both (one is the user's).
keys ctrl+f
xdotool type --delay 60 "Ember"
sleep 0.5
keys Tab Home space shift+Tab ctrl+a
xdotool type --delay 60 "Granite"
sleep 0.5
keys Tab Home space
shot keyboard-marked "$main"
keys alt+a
sleep 1.5
userComponents="$H/Library/Audio/Plug-Ins/Components"
if [ -e "$components (Disabled)/Ember EQ.component" ] && [ -e "$userComponents (Disabled)/Granite Pad.component" ]; then
  pass "Tab, Space and Shift+Tab switched off Ember and Granite from the keyboard"
else
  fail "the keyboard path did not switch off Ember and Granite"
fi
focus "$main"
keys ctrl+f ctrl+a BackSpace

# A quick filter plus a bulk command: "User only", then All Off, switches off the user's
# plug-ins and leaves the system's alone (the system's Aurora Synth too, a namesake).
# From the search back past "Cannot be read" and the architecture filter to the place filter.
keys ctrl+f shift+Tab shift+Tab shift+Tab Down # "System only"
keys Down                  # "User only"
sleep 0.5
keys alt+p Down Return     # Plug-Ins > All Off
sleep 0.5
shot user-only-all-off "$main"
keys alt+a
sleep 1.5
if [ -e "$userComponents (Disabled)/Aurora Synth.component" ] \
  && [ -e "$components/Aurora Synth.component" ] && [ -e "$components/Basalt Compressor.component" ]; then
  pass "\"User only\" and All Off switched off only the user's plug-ins"
else
  fail "\"User only\" and All Off reached the system's plug-ins or missed the user's"
fi
focus "$main"
keys ctrl+f shift+Tab shift+Tab shift+Tab Up Up # the place filter back to "System and user"
keys ctrl+f ctrl+a BackSpace

# Escape and Ctrl+W close the secondary windows.
keys alt+w Return # Window > Show Log
if logwin=$(wait_for_window Log); then
  focus "$logwin"
  keys Escape
  if xdotool search --onlyvisible --name '^Log$' >/dev/null 2>&1; then
    fail "Escape did not close the log window"
  else
    pass "Escape closed the log window"
  fi
else
  fail "Window > Show Log showed no window titled Log"
fi
focus "$main"
keys alt+w p
if prefwin=$(wait_for_window Preferences); then
  focus "$prefwin"
  keys ctrl+w
  if xdotool search --onlyvisible --name '^Preferences$' >/dev/null 2>&1; then
    fail "Ctrl+W did not close Preferences"
  else
    pass "Ctrl+W closed Preferences"
  fi
else
  fail "no Preferences window for Ctrl+W"
fi
focus "$main"

# Quit with a mark not applied asks first; Escape (Cancel) keeps the program and the mark.
keys ctrl+f
xdotool type --delay 60 "Basalt"
sleep 0.5
keys Tab Home space
keys ctrl+q
sleep 1
question=$(xdotool search --onlyvisible --name '^Korvane$' 2>/dev/null | grep -v "^$main\$" | head -n 1 || true)
if [ -n "$question" ]; then
  pass "Quit with a mark not applied asked first"
  shot quit-with-marks "$question"
  focus "$question"
  keys Escape
else
  fail "Quit with a mark not applied did not ask"
fi
if kill -0 "$app" 2>/dev/null && [ -e "$components/Basalt Compressor.component" ]; then
  pass "Cancel kept the program running and Basalt where it was"
else
  fail "Cancel did not keep the program and the mark"
fi
focus "$main"
keys ctrl+z # the mark taken back: nothing left to ask about at the end
keys ctrl+f ctrl+a BackSpace

# Save As into a folder that refuses the file: the error is said, the panel comes back, and no
# set without a file joins the pop-up (it once looked saved).
mkdir -p "$H/Documents"
if chattr +i "$H/Documents" 2>/dev/null; then
  focus "$main"
  keys alt+f Down Down Down Return # File > Save As...
  if savepanel=$(wait_for_window Save); then
    focus "$savepanel"
    keys Return
    sleep 1
    notsaved=$(xdotool search --onlyvisible --name '^Korvane$' 2>/dev/null | grep -v "^$main\$" | head -n 1 || true)
    if [ -n "$notsaved" ]; then
      pass "Save As into an unwritable folder said the set was not saved"
      shot save-as-refused "$notsaved"
      focus "$notsaved"
      keys Return
    else
      fail "Save As into an unwritable folder said nothing"
    fi
    if again=$(wait_for_window Save); then
      pass "the save panel came back after the failure"
      focus "$again"
      keys Escape
      sleep 0.5
      shot after-save-panel root
    else
      fail "the save panel did not come back"
    fi
  else
    fail "Save As showed no panel"
  fi
  chattr -i "$H/Documents"
  [ -e "$H/Documents/untitled.aukorv" ] && fail "a set file appeared in the refusing folder"
else
  echo "skip - chattr +i not supported where the demo lives"
fi
focus "$main"

# Preferences: the VST page's On box takes the VST tab out, and a second click brings it back.
keys alt+w p
if prefwin=$(wait_for_window Preferences); then
  pass "Preferences opened from the Window menu"
  # Beside the main window, so that neither hides the other in the pictures.
  xdotool windowmove "$prefwin" 1110 0
  focus "$prefwin"
  # The page bar has the focus: four pages right is VST. Its On box is clicked, not tabbed to:
  # with every format's page the bar scrolls, and its arrows may take stops of their own.
  keys Right Right Right Right
  shot preferences-vst "$prefwin"
  xdotool mousemove --window "$prefwin" 30 83 click 1
  sleep 0.5
  shot vst-off "$main"
  if [ "$(plist_value VSTOn)" = false ]; then pass "VSTOn stored off"; else fail "VSTOn not stored off"; fi
  if [ "$(tabbar_diff start vst-off)" != 0 ]; then
    pass "the tab bar changed when VST was switched off"
  else
    fail "the tab bar did not change when VST was switched off"
  fi
  focus "$prefwin"
  xdotool mousemove --window "$prefwin" 30 83 click 1
  sleep 0.5
  shot vst-on "$main"
  if [ "$(plist_value VSTOn)" = true ]; then pass "VSTOn stored on"; else fail "VSTOn not stored on"; fi
  if [ "$(tabbar_diff start vst-on)" = 0 ]; then
    pass "the VST tab came back where it was"
  else
    fail "the tab bar differs from the start after VST came back"
  fi
  xdotool key --window "$prefwin" Escape 2>/dev/null || true
else
  fail "no Preferences window"
fi

# A preferences folder that cannot be written (as after one "sudo korvane"): the change is said
# at once, with Try Again, Save Elsewhere... and Cancel.
if chattr +i "$H/Library/Preferences" 2>/dev/null; then
  focus "$main"
  keys alt+w p
  if prefwin=$(wait_for_window Preferences); then
    focus "$prefwin"
    shot preferences-again "$prefwin"
    # The window opens again on the VST page: a click on its On box changes a preference.
    xdotool mousemove --window "$prefwin" 30 83 click 1
    sleep 1
    alert=$(xdotool search --onlyvisible --name '^Korvane$' 2>/dev/null | grep -v "^$main\$" | head -n 1 || true)
    if [ -n "$alert" ]; then
      pass "an unwritable preferences folder was said at once"
      shot unwritable-settings "$alert"
      # Every write that fails before the first answer asks too: each is left with Escape.
      while [ -n "$alert" ]; do
        focus "$alert"
        keys Escape
        alert=$(xdotool search --onlyvisible --name '^Korvane$' 2>/dev/null | grep -v "^$main\$" | head -n 1 || true)
      done
    else
      fail "a preference change into an unwritable folder said nothing"
    fi
    chattr -i "$H/Library/Preferences"
    focus "$prefwin"
    xdotool mousemove --window "$prefwin" 30 83 click 1 # VST back on, now stored
    sleep 0.5
    if [ "$(plist_value VSTOn)" = true ]; then pass "VSTOn stored once the folder was writable"; else fail "VSTOn not stored after the folder came back"; fi
    xdotool key --window "$prefwin" Escape 2>/dev/null || true
  else
    fail "no Preferences window for the unwritable-settings case"
  fi
  chattr -i "$H/Library/Preferences" 2>/dev/null || true
else
  echo "skip - chattr +i not supported where the demo lives"
fi

# Backup and Restore Backup through the Plug-Ins menu (its last items: Backup, Restore Backup,
# Examine Audio Unit Alone), with the Audio Units in front.
backup="$dir/au-backup.tar.xz"
au_folders=("$components" "$components (Disabled)" "$H/Library/Audio/Plug-Ins/Components"
  "$H/Library/Audio/Plug-Ins/Components (Disabled)")
au_listing() { for f in "${au_folders[@]}"; do ls -A "$f" 2>/dev/null | sed "s|^|$f/|"; done; }
focus "$main"
keys alt+p Up Up Up Return
if savewin=$(wait_for_window Save); then
  focus "$savewin"
  keys ctrl+a
  xdotool type --delay 20 "$backup"
  keys Return
  sleep 2
  shot backup-written # the log window comes forward over the main window
  # GNU tar reads it, remarking on the pax keyword that keeps names as bytes.
  if [ -s "$backup" ] && tar -tJf "$backup" 2>/dev/null | grep -c '^korvane-backup/manifest.json$' >/dev/null; then
    pass "Backup wrote an archive with its manifest"
  else
    fail "Backup wrote no archive at $backup"
  fi
else
  fail "Backup opened no save dialog"
fi
before_restore="$(au_listing)"
mkdir -p "$dir/gone"
# Every Audio Unit goes, but Delta Delay, which stays installed (off) to be asked about.
for f in "${au_folders[@]}"; do
  for item in "$f"/*.component; do
    [ -e "$item" ] || continue
    case "$item" in */"Delta Delay.component") ;; *) mv "$item" "$dir/gone/$(basename "$f")-$(basename "$item")" ;; esac
  done
done
focus "$main"
keys alt+p Up Up Return
if openwin=$(wait_for_window Open); then
  focus "$openwin"
  keys ctrl+a
  xdotool type --delay 20 "$backup"
  keys Return
  sleep 2
  shot restore-asks
  keys Return # the default answer: keep the installed copy
  sleep 2
  focus "$main"
  shot restored
  if [ "$(au_listing)" = "$before_restore" ]; then
    pass "Restore Backup put every Audio Unit back where it was"
  else
    fail "the Audio Units differ after Restore Backup"
    diff <(echo "$before_restore") <(au_listing) || true
  fi
  if [ -e "$components (Disabled)/Delta Delay.component" ]; then
    pass "the installed Delta Delay was kept"
  else
    fail "Delta Delay is gone after Restore Backup"
  fi
else
  fail "Restore Backup opened no open dialog"
fi

# Quit through the File menu; the program writes groups and sets on its way out.
focus "$main"
rm -f "$support/groups.plist" "$support"/*sets.plist
xdotool key alt+f
sleep 0.5
shot file-menu
xdotool key q
for _ in $(seq 50); do
  kill -0 "$app" 2>/dev/null || break
  sleep 0.1
done
if kill -0 "$app" 2>/dev/null; then
  fail "korvane still runs after File > Quit"
else
  app=""
  pass "File > Quit ended the program"
fi
for file in groups.plist ausets.plist rtassets.plist massets.plist vstsets.plist; do
  if [ -s "$support/$file" ]; then pass "$file written at quit"; else fail "$file not written at quit"; fi
done
if grep -q "untitled.aukorv" "$support/ausets.plist" 2>/dev/null; then
  fail "the set that was never written is in the set list"
else
  pass "the set that was never written is not in the set list"
fi

# The table's new columns on a Linux library of its own: Debian's LV2 bundles say their vendor
# and version in their own files, and those show in the LV2 tab (read back through Ctrl+C, which
# copies the selected rows as shown); VST 3 bundles of two architectures narrow to one with the
# architecture filter.
linux_columns_check() {
  local lx="$dir/linux" bundle copied vst3 rows
  local LR="$lx/root" LH="$lx/home"
  if ! command -v xclip >/dev/null; then
    echo "skip - xclip not found; run tools/setup.sh"
    return 0
  fi
  mkdir -p "$LR/usr/lib/lv2" "$LH"
  for bundle in 3BandEQ MVerb Nekobi; do
    [ -d "/usr/lib/lv2/$bundle.lv2" ] && cp -a "/usr/lib/lv2/$bundle.lv2" "$LR/usr/lib/lv2/"
  done
  copied=$(find "$LR/usr/lib/lv2" -mindepth 1 -maxdepth 1 | wc -l)
  vst3_bundle() { # name vendor version architecture...
    local b="$LH/.vst3/$1.vst3/Contents" vendor="$2" version="$3" name="$1"
    shift 3
    for arch in "$@"; do mkdir -p "$b/$arch"; done
    mkdir -p "$b/Resources"
    printf '{ "Name": "%s", "Version": "%s", "Factory Info": { "Vendor": "%s", }, "Classes": [], }\n' \
      "$name" "$version" "$vendor" >"$b/Resources/moduleinfo.json"
  }
  vst3_bundle Wide "Acme Audio" 1.10.0 x86_64-linux aarch64-linux
  vst3_bundle Narrow "Acme Audio" 1.9.2 x86_64-linux
  vst3_bundle Pi "Bittern" 0.3 aarch64-linux

  launch "$LR" "$LH" "$lx" LANGUAGE=en LC_ALL=C.UTF-8
  if ! main=$(wait_for_window Korvane); then
    fail "Linux library: no window"
    return 0
  fi
  sleep 1.5
  focus "$main"
  # From the Audio Units to the LV2 tab (AudioUnits, RTAS, MAS, VST, LV2), into its table; the
  # focus stays on the page left behind, so each step starts from the front page's search.
  for _ in 1 2 3 4; do keys ctrl+f ctrl+Tab; done
  keys ctrl+f Tab ctrl+a ctrl+c
  shot linux-lv2-columns "$main"
  rows=$(xclip -o -selection clipboard 2>/dev/null || true)
  if [ "$copied" -eq 0 ]; then
    echo "skip - no Debian LV2 bundles to copy (tools/setup.sh installs them)"
  elif printf '%s\n' "$rows" | head -n 1 | grep -q "Name.Vendor.Version" \
    && printf '%s\n' "$rows" | grep -q "3BandEQ.lv2.DISTRHO.2.0"; then
    pass "the LV2 tab shows the vendor and version the bundles' own files give"
  else
    fail "the LV2 tab does not show DISTRHO 2.0 for 3BandEQ: $(printf '%s' "$rows" | head -n 3)"
  fi
  # The next tab, VST3: the architecture filter (before "Cannot be read", before the search)
  # from "All architectures" down to "aarch64".
  keys ctrl+f ctrl+Tab
  keys ctrl+f shift+Tab shift+Tab Down
  keys ctrl+f Tab ctrl+a ctrl+c
  shot linux-vst3-aarch64 "$main"
  rows=$(xclip -o -selection clipboard 2>/dev/null || true)
  if [ "$(printf '%s\n' "$rows" | grep -c '\.vst3')" = 2 ] \
    && printf '%s\n' "$rows" | grep -q "Pi.vst3.Bittern.0.3" \
    && printf '%s\n' "$rows" | grep -q "Wide.vst3.Acme Audio.1.10.0" \
    && ! printf '%s\n' "$rows" | grep -q "Narrow.vst3"; then
    pass "the architecture filter narrowed the VST3 tab to the two aarch64 bundles"
  else
    fail "the architecture filter did not narrow VST3 to Pi and Wide: $(printf '%s' "$rows" | tr '\n' '|')"
  fi
  focus "$main"
  quit_with_ctrl_q ""
}
linux_columns_check

# A German-speaking user: the menus and the windows they open speak German.
launch "$R" "$H" "$dir" LANGUAGE=de LC_ALL=de_DE.UTF-8
if main=$(wait_for_window Korvane); then
  sleep 1.5
  focus "$main"
  keys alt+f
  sleep 0.5
  shot german-window-menu
  keys e
  if prefwin=$(wait_for_window Einstellungen); then
    pass "German start-up: Fenster > Einstellungen opened \"Einstellungen\""
    xdotool key --window "$prefwin" Escape 2>/dev/null || true
  else
    fail "German start-up: no window titled Einstellungen"
  fi
  focus "$main"
  quit_with_ctrl_q ""
else
  fail "German start-up: no window"
fi

# The list across formats on a library of its own: one product as an LV2 bundle and a VST 3
# module, and one in LV2 alone. Switch to the list (Ctrl+Shift+A), filter it to the products in
# more than one format, open Switch Off Unused Formats and cancel (nothing moves), then untick LV2
# and switch off for real: the LV2 bundle lands in its " (Disabled)" folder, the VST 3 stays.
all_formats_view() {
  local lib="$dir/all-formats" r h win dialog
  r="$lib/root"
  h="$lib/home"
  mkdir -p "$r" "$h/.lv2/echo.lv2" "$h/.lv2/solo.lv2" \
    "$h/.vst3/Echo Chamber.vst3/Contents/x86_64-linux" "$h/.vst3/Echo Chamber.vst3/Contents/Resources"
  local prefixes='@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .'
  local stem name
  for stem in echo solo; do
    [ "$stem" = echo ] && name="Echo Chamber" || name="Solo Synth"
    printf '%s\n<urn:e2e:%s> a lv2:Plugin ; lv2:binary <p.so> ; rdfs:seeAlso <p.ttl> .\n' \
      "$prefixes" "$stem" >"$h/.lv2/$stem.lv2/manifest.ttl"
    printf '%s\n<urn:e2e:%s> doap:name "%s" ; doap:maintainer [ foaf:name "E2E Audio" ] .\n' \
      "$prefixes" "$stem" "$name" >"$h/.lv2/$stem.lv2/p.ttl"
  done
  echo "not loaded" >"$h/.vst3/Echo Chamber.vst3/Contents/x86_64-linux/Echo Chamber.so"
  cat >"$h/.vst3/Echo Chamber.vst3/Contents/Resources/moduleinfo.json" <<'JSON'
{ "Name": "Echo Chamber", "Version": "1.0.0", "Factory Info": { "Vendor": "E2E Audio" },
  "Classes": [ { "CID": "0123456789ABCDEF0123456789ABCDEF", "Category": "Audio Module Class",
                 "Name": "Echo Chamber", "Vendor": "E2E Audio", "Version": "1.0.0" } ] }
JSON
  launch "$r" "$h" "$lib" -u LV2_PATH -u VST3_PATH -u CLAP_PATH -u LADSPA_PATH -u DSSI_PATH \
    -u VST_PATH -u LXVST_PATH
  if ! win=$(wait_for_window Korvane); then
    fail "all formats: no window"
    return
  fi
  sleep 1.5
  focus "$win"
  keys ctrl+shift+a
  shot all-formats "$win"
  # From the list, Shift+Tab back past Switch Off Unused Formats and the search to the filter.
  keys shift+Tab shift+Tab shift+Tab space
  shot all-formats-filtered "$win"
  local changed
  changed=$(compare -metric AE "$shots/all-formats.png" "$shots/all-formats-filtered.png" null: 2>&1 || true)
  if [ "${changed%% *}" != 0 ]; then
    pass "all formats: the list and its multi-format filter are shown ($changed pixels changed)"
  else
    fail "all formats: Ctrl+Shift+A and the filter changed nothing on screen"
  fi
  # The multi-format filter off again, and the format filter (back past "Cannot be read" and the
  # architectures) down past LV2 to VST3: Echo Chamber alone is left, so the status line says
  # "1 shown" as under the multi-format filter, where unfiltered it counted none hidden.
  keys space shift+Tab shift+Tab shift+Tab Down Down
  shot all-formats-vst3 "$win"
  local same other
  same=$(status_diff all-formats-filtered all-formats-vst3)
  other=$(status_diff all-formats all-formats-vst3)
  if [ "${same%% *}" = 0 ] && [ "${other%% *}" != 0 ]; then
    pass "all formats: the format filter VST3 leaves the one product that has a VST 3"
  else
    fail "all formats: the format filter did not narrow the list to Echo Chamber ($same, $other pixels)"
  fi
  # Back to all formats and to the multi-format filter, ticked again, as the steps below expect.
  keys Up Up Tab Tab Tab space
  keys Tab Tab space
  if dialog=$(wait_for_window "Switch Off Unused Formats"); then
    focus "$dialog"
    keys space # the first format's box: LV2
    shot unused-formats-preview "$dialog"
    keys Escape
    sleep 0.5
    if [ -d "$h/.lv2/echo.lv2" ] && [ ! -e "$h/.lv2 (Disabled)" ]; then
      pass "all formats: Cancel after the preview moved nothing"
    else
      fail "all formats: something moved after Cancel"
    fi
  else
    fail "all formats: Switch Off Unused Formats opened no window"
  fi
  focus "$win"
  keys space # the focus is back on Switch Off Unused Formats...
  if dialog=$(wait_for_window "Switch Off Unused Formats"); then
    focus "$dialog"
    keys space alt+s
    sleep 1.5
    if [ -d "$h/.lv2 (Disabled)/echo.lv2" ] && [ ! -e "$h/.lv2/echo.lv2" ] &&
      [ -d "$h/.vst3/Echo Chamber.vst3" ] && [ -d "$h/.lv2/solo.lv2" ]; then
      pass "all formats: LV2's Echo Chamber switched off on disk, its VST 3 and Solo Synth kept"
    else
      fail "all formats: the disk is not as Switch Off Unused Formats should leave it"
      find "$h/.lv2"* "$h/.vst3"* -maxdepth 1 | sed 's/^/     /'
    fi
    shot unused-formats-applied "$win"
  else
    fail "all formats: Switch Off Unused Formats opened no window the second time"
  fi
  focus "$win"
  quit_with_ctrl_q "all formats: "
}
all_formats_view

echo "Pictures in $shots"
if [ "$failures" -gt 0 ]; then
  echo "gui-e2e.sh: $failures check(s) failed; korvane's output:" >&2
  cat "$dir/korvane.log" >&2
  exit 1
fi
