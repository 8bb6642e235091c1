#!/usr/bin/env bash
# Runs, whole and under AddressSanitizer and UBSan, the test programs of every reader of outside
# data: malformed bytes must never crash or over-read.
#   test_codec    property lists, typed streams, bundles, Mach-O headers, Finder info, RTF and the
#                 Linux plug-in formats' metadata
#   test_core     the data files (damaged ones too), a plug-in's executable and its archive
#   test_library  the set documents, plug-in recognition and the Audio Unit component names
#   test_probe    the probe's reports and its runner
# Last, a program that decodes a set and returns at once: the order in which statics go at exit
# must not matter. Fails if a program ran no test, so a renamed or emptied program cannot pass
# unnoticed.
set -euo pipefail
cd "$(dirname "$0")/.."
programs=(test_codec test_core test_library test_probe)
cmake --preset asan >/dev/null
cmake --build --preset asan --target "${programs[@]}" decode_set_and_exit
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
log=$(mktemp)
trap 'rm -f "$log"' EXIT
for program in "${programs[@]}"; do
  echo "+ $program"
  build-asan/tests/"$program" --gtest_brief=1 | tee "$log"
  ran=$(sed -n 's/^\[  PASSED  \] \([0-9]\+\) tests\?\.$/\1/p' "$log" | tail -n 1)
  if [ -z "$ran" ] || [ "$ran" -eq 0 ]; then
    echo "asan-parsers: $program ran no test" >&2
    exit 1
  fi
done
build-asan/tests/decode_set_and_exit
