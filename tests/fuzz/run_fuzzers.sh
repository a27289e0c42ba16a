#!/bin/sh
# Builds the fuzz targets with clang in build-fuzz/, writes the seed corpora
# and runs each target in turn for a bounded time.
#   tests/fuzz/run_fuzzers.sh [seconds-per-target]   (default 60)
# Findings (crash-*, leak-*, timeout-*) are left in build-fuzz/findings/.
set -eu
seconds=${1:-60}
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$root/build-fuzz

CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVEMCOV_FUZZ=ON -DVEMCOV_TESTS=OFF -DVEMCOV_BENCH=ON >/dev/null
cmake --build "$build" -j2 --target spi_line_fuzzer dpi_file_fuzzer fuzz_make_seeds

mkdir -p "$build/corpus/spi" "$build/corpus/dpi" "$build/findings"
"$build/tests/fuzz/fuzz_make_seeds" "$build/corpus/spi" "$build/corpus/dpi"

# The documented exits leave what they were reading to the process exit, so
# leak detection is off; the unit tests check the normal paths for leaks.
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0"
for target in spi_line_fuzzer:spi dpi_file_fuzzer:dpi; do
  name=${target%%:*}
  corpus=${target##*:}
  echo "== $name for $seconds s"
  "$build/tests/fuzz/$name" "$build/corpus/$corpus" -max_total_time="$seconds" -max_len=8192 \
    -detect_leaks=0 -close_fd_mask=3 -rss_limit_mb=2048 -malloc_limit_mb=512 -timeout=10 \
    -artifact_prefix="$build/findings/$name-" -print_final_stats=1 2>&1 | tail -n 25
done
