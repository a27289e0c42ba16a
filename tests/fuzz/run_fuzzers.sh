#!/bin/sh
# Builds the fuzz targets with clang in build-fuzz/, writes the seed corpora
# and runs each target in turn for a bounded time.
#   tests/fuzz/run_fuzzers.sh [seconds-per-target]   (default 60)
# Each target's last lines (executions, coverage, peak memory) are printed;
# findings (crash-*, leak-*, timeout-*, oom-*) are left in build-fuzz/findings/
# and make the script exit with status 1.
set -eu
seconds=${1:-60}
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$root/build-fuzz
targets="spi_line_fuzzer dpi_file_fuzzer call_sites_fuzzer component_file_fuzzer listing_fuzzer command_line_fuzzer import_json_fuzzer"

CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVEMCOV_FUZZ=ON -DVEMCOV_TESTS=OFF -DVEMCOV_BENCH=ON >/dev/null
# shellcheck disable=SC2086
cmake --build "$build" -j2 --target $targets fuzz_make_seeds

corpus=$build/corpus
mkdir -p "$build/findings"
for kind in spi dpi calls comp src args json; do
  mkdir -p "$corpus/$kind"
done
"$build/tests/fuzz/fuzz_make_seeds" "$corpus/spi" "$corpus/dpi"
cp "$corpus"/spi/* "$corpus/calls/"
printf 'src/\n~test\nONE_LINE_NOTFEASIBLE: "NF"\nBEGIN_NOTFEASIBLE: "B"\nEND_NOTFEASIBLE: "E"\n' > "$corpus/comp/seed0"
printf 'ONE_LINE_NOTFEASIBLE: "NOT_FEASIBLE"\n' > "$corpus/comp/seed1"
cp "$root"/examples/src/*.cpp "$root"/examples/src/*.h "$corpus/src/"
printf '/* BEGIN_DEBUG_ONLY */\nint f(void) { return 0; } // NOT_FEASIBLE\n/* END_DEBUG_ONLY */\n"/*"; // x\n' > "$corpus/src/seed0"
printf -- '-counts\0-ref\0old.dpi\0-prj\0p\0-ccolor\0red' > "$corpus/args/seed0"
printf -- '-txtbcvrg\0out.txt\0-comp\0list\0-onelinedsbl\0NF\0-srcroot\0/r' > "$corpus/args/seed1"
printf -- '-tvx_host\0-tvx_db_name\0db\0-mname\0m\0-maddr\0a\0-nopmeter\0-h' > "$corpus/args/seed2"
# The first byte chooses the reader: even for llvm-cov's export, odd for gcov's.
printf '0{"data":[{"files":[],"functions":[{"name":"a.c:f","count":2,"filenames":["a.c","m.h"],"regions":[[1,1,9,2,2,0,0,0],[3,5,3,9,1,0,1,1],[7,1,7,5,0,1,0,0],[4,1,4,3,0,0,0,3]]},{"name":"g","count":0,"filenames":["a.c"],"regions":[[1,1,9,2,0,0,0,0]]}],"totals":{}}],"type":"llvm.coverage.json.export","version":"2.0.1"}' > "$corpus/json/seed0"
printf '1{"format_version":"1","current_working_directory":"/s","files":[{"file":"m.c","functions":[{"name":"main","start_line":1,"start_column":5,"end_line":4,"execution_count":2},{"name":"_ZL1hv","start_line":6,"start_column":1,"end_line":8,"execution_count":0}],"lines":[{"line_number":1,"count":2,"function_name":"main"},{"line_number":2,"count":0},{"line_number":7,"count":0,"function_name":"_ZL1hv"},{"line_number":12,"count":1}]}]}' > "$corpus/json/seed1"

# The documented exits leave what they were reading to the process exit, so
# leak detection is off; the unit tests check the normal paths for leaks.
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0"
for target in spi_line_fuzzer:spi dpi_file_fuzzer:dpi call_sites_fuzzer:calls component_file_fuzzer:comp \
              listing_fuzzer:src command_line_fuzzer:args import_json_fuzzer:json; do
  name=${target%%:*}
  seeds=${target##*:}
  echo "== $name for $seconds s"
  "$build/tests/fuzz/$name" "$corpus/$seeds" -max_total_time="$seconds" -max_len=8192 \
    -detect_leaks=0 -close_fd_mask=3 -rss_limit_mb=2048 -malloc_limit_mb=512 -timeout=10 \
    -artifact_prefix="$build/findings/$name-" -print_final_stats=1 > "$build/$name.log" 2>&1 || true
  grep -E '^(#[0-9]+\s+DONE|stat::number_of_executed_units|stat::peak_rss_mb)|ERROR:' "$build/$name.log" || tail -n 5 "$build/$name.log"
done

findings=$(find "$build/findings" -type f | wc -l)
if [ "$findings" -ne 0 ]; then
  echo "fuzzing found $findings problem(s):"
  ls "$build/findings"
  exit 1
fi
echo "fuzzing: no findings"
