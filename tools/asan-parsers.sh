#!/usr/bin/env bash
# Runs the tests of every reader of outside data (whole, the readers of codec/: property lists,
# typed streams, bundles, Mach-O headers, Finder info, RTF and the Linux plug-in formats; the
# probe's report and runner; and the set documents' and components' cases of library/)
# under AddressSanitizer and UBSan: malformed bytes must never crash or over-read.
# Last, a program that decodes a set and returns without resetting the shared instances: the
# order in which statics go at exit must not matter.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset asan >/dev/null
cmake --build --preset asan --target test_library test_codec test_probe decode_set_and_exit
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
build-asan/tests/test_library --gtest_brief=1 --gtest_filter='SetDocument*:Recognition*:AudioUnitComponentNames*'
build-asan/tests/test_codec --gtest_brief=1
build-asan/tests/test_probe --gtest_brief=1
build-asan/tests/decode_set_and_exit
