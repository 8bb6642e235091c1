# Sourced by the tools' scripts. find_build BUILD: the build folder given (default build), also
# when it is meant from the repository's top, as an absolute path. need_programs NAME PROGRAM...:
# stops with a hint to build when a program is missing. demo_library DEMO KIND: a fresh temporary
# folder holding DEMO's plug-in library; prints its path.

find_build() {
  local top build
  top="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
  build="${1:-build}"
  if [ ! -d "$build" ] && [ -d "$top/$build" ]; then
    build="$top/$build"
  fi
  (cd "$build" 2>/dev/null && pwd) || echo "$build"
}

need_programs() {
  local script="$1" program
  shift
  for program in "$@"; do
    if [ ! -x "$program" ]; then
      echo "$script: $program not found; build first:" >&2
      echo "  cmake --preset default && cmake --build --preset default" >&2
      exit 1
    fi
  done
}

demo_library() {
  local demo="$1" dir
  dir="$(mktemp -d "${TMPDIR:-/tmp}/korvane-$2.XXXXXX")"
  "$demo" "$dir" >/dev/null || return 1
  echo "$dir"
}
