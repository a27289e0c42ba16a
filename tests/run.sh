#!/bin/sh
# Builds vemcov and runs the whole test suite: a normal build in build/,
# then one with address and undefined-behaviour sanitizers in build-asan/,
# where any sanitizer report aborts the test that caused it; then opens the
# example's report in headless Chromium (tests/browser_check.sh); then a
# short smoke run of every fuzz target (tests/fuzz/run_fuzzers.sh). Every
# stage runs even when an earlier one failed; each prints how long it took,
# and the last line sums them up as "N passed, M failed" (every test case of
# the two builds, and the browser check and the fuzz smoke run as one case
# each). Exits non-zero when anything failed.
set -u

cd "$(dirname "$0")/.."
sh tests/install-deps.sh || exit 1

JOBS=2
FUZZ_SECONDS=${VEMCOV_FUZZ_SECONDS:-15}
passed=0
failed=0
log=$(mktemp)
trap 'rm -f "$log"' EXIT

# stage <name> <command...>: runs a stage and tells its time.
stage() {
    name=$1
    shift
    echo "== $name"
    start=$(date +%s)
    "$@"
    status=$?
    echo "== $name: $(($(date +%s) - start)) s, status $status"
    return $status
}

# Counts ctest's closing line "NN% tests passed, F tests failed out of T".
count_ctest() {
    line=$(grep -E 'tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1)
    if [ -z "$line" ]; then
        failed=$((failed + 1))
        return
    fi
    total=$(echo "$line" | sed -E 's/.* out of ([0-9]+).*/\1/')
    bad=$(echo "$line" | sed -E 's/.*passed, ([0-9]+) tests? failed.*/\1/')
    passed=$((passed + total - bad))
    failed=$((failed + bad))
}

build_and_test() {
    dir=$1
    shift
    cmake -S . -B "$dir" -G Ninja "$@" && cmake --build "$dir" -j"$JOBS" || return 1
    ctest --test-dir "$dir" -j"$JOBS" --output-on-failure
}

stage "normal build ($(pwd)/build)" build_and_test build 2>&1 | tee "$log"
count_ctest

ASAN_OPTIONS="halt_on_error=1:abort_on_error=1:print_stacktrace=1:detect_leaks=1" \
UBSAN_OPTIONS="halt_on_error=1:abort_on_error=1:print_stacktrace=1" \
    stage "sanitizer build (build-asan)" build_and_test build-asan -DVEMCOV_SANITIZE=ON 2>&1 | tee "$log"
count_ctest

# The pipes above hide a stage's status; these two stages count by it.
if stage "browser check (headless Chromium on the example's report)" sh tests/browser_check.sh; then
    passed=$((passed + 1))
else
    failed=$((failed + 1))
fi
if stage "fuzz smoke run ($FUZZ_SECONDS s per target)" sh tests/fuzz/run_fuzzers.sh "$FUZZ_SECONDS"; then
    passed=$((passed + 1))
else
    failed=$((failed + 1))
fi

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
