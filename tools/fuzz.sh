#!/usr/bin/env bash
# Builds the libFuzzer harnesses of fuzz/ (the fuzz preset, in build-fuzz) and runs each for
# SECONDS (default 10) on a scratch copy of its seed corpus, so the corpus in the repository is
# never written to. Prints each harness's executions and coverage; fails when any harness crashes,
# hangs or leaks, and says where the input that did it was kept.
#
#   tools/fuzz.sh [--runs N] [SECONDS] [TARGET...]
#
# --runs N stops a harness after N executions even when time is left. TARGET names harnesses
# (the names of fuzz/CMakeLists.txt's korvane_fuzzer lines); default: all of them.
set -euo pipefail
cd "$(dirname "$0")/.."

runs=-1
if [ "${1:-}" = "--runs" ]; then
  runs=$2
  shift 2
fi
seconds=${1:-10}
[ $# -gt 0 ] && shift
# Every harness fuzz/CMakeLists.txt builds, so a new one is run without being named twice.
mapfile -t all < <(sed -n 's/^korvane_fuzzer(\([a-z0-9_]*\).*/\1/p' fuzz/CMakeLists.txt)
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${all[@]}")

if [ ! -f build-fuzz/CMakeCache.txt ]; then
  cmake --preset fuzz >/dev/null
fi
cmake --build --preset fuzz >/dev/null

work=build-fuzz/fuzz-runs
failed=()
printf '%-14s %12s %8s %8s %8s %8s  %s\n' target executions seconds cov ft corpus result
for target in "${targets[@]}"; do
  program=build-fuzz/fuzz/fuzz_$target
  if [ ! -x "$program" ]; then
    echo "no harness named $target" >&2
    exit 2
  fi
  dir=$work/$target
  rm -rf "$dir"
  mkdir -p "$dir/corpus" "$dir/artifacts"
  cp fuzz/corpus/"$target"/* "$dir/corpus/"
  options=(-max_total_time="$seconds" -runs="$runs" -timeout=10 -print_final_stats=1
           -artifact_prefix="$dir/artifacts/")
  [ -f fuzz/"$target".dict ] && options+=(-dict=fuzz/"$target".dict)

  status=0
  start=$SECONDS
  "$program" "${options[@]}" "$dir/corpus" >"$dir/log" 2>&1 || status=$?
  elapsed=$((SECONDS - start))

  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$dir/log" | tail -n 1)
  # The last status line carries the final edge (cov) and feature (ft) counts and the corpus size.
  status_line=$(grep -E '^#[0-9]+' "$dir/log" | grep ' cov: ' | tail -n 1 || true)
  cov=$(sed -n 's/.* cov: \([0-9]*\).*/\1/p' <<<"$status_line")
  ft=$(sed -n 's/.* ft: \([0-9]*\).*/\1/p' <<<"$status_line")
  corpus=$(sed -n 's/.* corp: \([0-9]*\).*/\1/p' <<<"$status_line")
  result=ok
  if [ $status -ne 0 ]; then
    result="FAILED (exit $status): $(ls "$dir"/artifacts/* 2>/dev/null | tr '\n' ' ')"
    failed+=("$target")
  fi
  printf '%-14s %12s %8s %8s %8s %8s  %s\n' "$target" "${executions:-?}" "$elapsed" \
    "${cov:-?}" "${ft:-?}" "${corpus:-?}" "$result"
done

if [ ${#failed[@]} -gt 0 ]; then
  for target in "${failed[@]}"; do
    echo "--- $target: end of $work/$target/log" >&2
    tail -n 40 "$work/$target/log" >&2
  done
  exit 1
fi
