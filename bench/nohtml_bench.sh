#!/bin/sh
# Time and peak memory of a full-road run without HTML (-nohtml) over a
# generated project, with the comment scanner active and both full block
# files written. Timings are read by a person; nothing here passes or fails.
#
#   bench/nohtml_bench.sh [build-dir] [files] [functions-per-file] [lines-per-function]
#
# Defaults: build/, 2000 files of 50 functions of 20 lines (100,000
# functions). The project goes to /tmp/vemcov-bench-nohtml.
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/${1:-build}
files=${2:-2000}
functions=${3:-50}
lines=${4:-20}
dir=/tmp/vemcov-bench-nohtml

rm -rf "$dir"
"$build/bench/generate_project" "$dir" "$files" "$functions" "$lines"
echo "project: $files files, $((files * functions)) functions," \
     "$(cat "$dir"/src/*.c | wc -l) source lines, vemtra.dpi $(wc -c < "$dir/vemtra.dpi") bytes"

cd "$dir"
# "mix" ends many line comments of the generated code, so markers are found.
/usr/bin/time -v -o time.log "$build/vemcov" -nohtml -nopmeter -onelinedsbl mix \
    -beginblkdsbl BEGIN_NOT_FEASIBLE -endblkdsbl END_NOT_FEASIBLE \
    -txtbcvrgfull full.txt -xmlbcvrgfull full.xml > run.out 2> run.err
echo "exit status 0; full.txt $(wc -l < full.txt) lines, full.xml $(wc -c < full.xml) bytes"
grep -E 'Elapsed \(wall clock\)|User time|System time|Maximum resident set size' time.log
