#!/usr/bin/env bash
# clang-tidy (.clang-tidy's bugprone and performance checks, each finding an error) over the C++
# sources changed since BASE (default: where this branch left main), with the compile commands
# of BUILD (default: build). The whole tree takes about half an hour on two cores, too long for
# every CI run; the dev preset reads every file it compiles.
#   tools/tidy-changed.sh [BASE] [BUILD]
set -euo pipefail
cd "$(dirname "$0")/.."
# Without main (a CI checkout of one branch) the last commit's files are read.
# On main itself (where CI runs), the last commit's files are read too.
base=${1:-$(git merge-base HEAD main 2>/dev/null || true)}
if [ -z "${1:-}" ] && { [ -z "$base" ] || [ "$base" = "$(git rev-parse HEAD)" ]; }; then
  base=$(git rev-parse -q --verify HEAD~1 || true)
fi
build=${2:-build}
if [ ! -f "$build/compile_commands.json" ]; then
  echo "tidy-changed: no $build/compile_commands.json; configure first" >&2
  exit 1
fi
if [ -n "$base" ]; then
  changed=$(git diff --name-only --diff-filter=d "$base" -- '*.cpp')
else
  changed=$(git diff-tree --root --no-commit-id --name-only -r --diff-filter=d HEAD -- '*.cpp')
fi
mapfile -t files < <(grep -E '^(src|tests|tools|bench)/' <<<"$changed" || true)
# Only files the build compiles have compile commands.
listed=()
for file in "${files[@]}"; do
  if grep -q "\"file\": \"$PWD/$file\"" "$build/compile_commands.json"; then
    listed+=("$file")
  fi
done
echo "tidy-changed: ${#listed[@]} files since ${base:-the commit before HEAD}"
[ ${#listed[@]} -eq 0 ] && exit 0
printf '%s\n' "${listed[@]}" | xargs -P 2 -n 1 clang-tidy -p "$build" --quiet
