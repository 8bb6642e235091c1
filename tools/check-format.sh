#!/usr/bin/env bash
# Fails when a C++ file of the repository differs from what the committed .clang-format makes of it.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files '*.cpp' '*.h')
clang-format --dry-run --Werror "${files[@]}"
