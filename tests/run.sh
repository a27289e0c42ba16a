#!/bin/sh
# Builds vemcov and runs the whole test suite twice: a normal build in
# build/, then one with address and undefined-behaviour sanitizers in
# build-asan/, where any sanitizer report aborts the test that caused it;
# then opens the example's report in headless Chromium
# (tests/browser_check.sh). Exits non-zero when anything fails.
set -eu

cd "$(dirname "$0")/.."
sh tests/install-deps.sh

JOBS=2

echo "== normal build (build/)"
cmake -S . -B build -G Ninja
cmake --build build -j"$JOBS"
ctest --test-dir build -j"$JOBS" --output-on-failure

echo "== sanitizer build (build-asan/)"
cmake -S . -B build-asan -G Ninja -DVEMCOV_SANITIZE=ON
cmake --build build-asan -j"$JOBS"
ASAN_OPTIONS="halt_on_error=1:abort_on_error=1:print_stacktrace=1:detect_leaks=1" \
UBSAN_OPTIONS="halt_on_error=1:abort_on_error=1:print_stacktrace=1" \
    ctest --test-dir build-asan -j"$JOBS" --output-on-failure

echo "== browser check (headless Chromium on the example's report)"
sh tests/browser_check.sh
