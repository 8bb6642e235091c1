#!/usr/bin/env bash
# clang-tidy (.clang-tidy's bugprone and performance checks, each finding an error) over every
# .cpp under the given folders (or the given .cpp files), two files at a time; the headers they
# include are read with them. Reads every file, then fails if any had a finding; also fails on a
# folder that holds no .cpp and on a file no build compiles. Without arguments it reads all of src
# and fuzz/, which docs/DESIGN.md calls tidy-clean, so that they stay clean.
#   tools/tidy-all.sh [--build DIR] [FOLDER|FILE.cpp...]
# The compile commands come from DIR (default: build, the default preset); fuzz/ is compiled only
# by the fuzz preset, whose build-fuzz is configured (not built) when it is missing.
set -euo pipefail
cd "$(dirname "$0")/.."

clean=(src fuzz)

build=build
if [ "${1:-}" = "--build" ]; then
  build=$2
  shift 2
fi
folders=("$@")
[ ${#folders[@]} -gt 0 ] || folders=("${clean[@]}")

if [ ! -f "$build/compile_commands.json" ]; then
  echo "tidy-all: no $build/compile_commands.json; configure first (cmake --preset default)" >&2
  exit 1
fi

# The build folder whose compile commands hold FILE, or nothing.
database_for() {
  local dir
  for dir in "$build" build-fuzz; do
    if [ -f "$dir/compile_commands.json" ] &&
      grep -qF "\"file\": \"$PWD/$1\"" "$dir/compile_commands.json"; then
      echo "$dir"
      return
    fi
  done
}

start=$SECONDS
total=0
failed=()
for folder in "${folders[@]}"; do
  folder=${folder%/}
  if [ "$folder" = fuzz ] && [ ! -f build-fuzz/compile_commands.json ]; then
    cmake --preset fuzz >/dev/null
  fi
  if [ -f "$folder" ]; then
    files=("$folder")
  else
    mapfile -t files < <(find "$folder" -name '*.cpp' -type f | sort)
  fi
  if [ ${#files[@]} -eq 0 ]; then
    echo "tidy-all: $folder holds no .cpp" >&2
    exit 1
  fi
  # Each file is read with the compile commands of the build that compiles it.
  own=()
  fuzzed=()
  for file in "${files[@]}"; do
    case $(database_for "$file") in
      "$build") own+=("$file") ;;
      build-fuzz) fuzzed+=("$file") ;;
      *)
        echo "tidy-all: no build compiles $file" >&2
        exit 1
        ;;
    esac
  done
  ok=1
  if [ ${#own[@]} -gt 0 ] &&
    ! printf '%s\0' "${own[@]}" | xargs -0 -P 2 -n 1 clang-tidy -p "$build" --quiet; then
    ok=0
  fi
  if [ ${#fuzzed[@]} -gt 0 ] &&
    ! printf '%s\0' "${fuzzed[@]}" | xargs -0 -P 2 -n 1 clang-tidy -p build-fuzz --quiet; then
    ok=0
  fi
  total=$((total + ${#files[@]}))
  if [ $ok = 1 ]; then
    echo "tidy-all: $folder clean (${#files[@]} files)"
  else
    echo "tidy-all: findings under $folder" >&2
    failed+=("$folder")
  fi
done
echo "tidy-all: $total files in $((SECONDS - start)) s"
if [ ${#failed[@]} -gt 0 ]; then
  echo "tidy-all: findings under ${failed[*]}" >&2
  exit 1
fi
