#!/bin/sh
# The modern view's cost (-nohtml -html5) on a generated project of 2,000
# files, 120,000 functions and 2.65 million source lines, beside the
# documented report's and beside the floor of reading the sources and
# writing the view's files with the same bytes (bench/write_floor), in the
# same run; the view and the floor also again over their first files (a
# re-run). ROUNDS rounds (5 unless set) and their medians. Printed, never
# checked; the goal is at most 0.7 s wall and 64 MiB for the view on one
# thread, so every run is given -j 1 (two processors would otherwise bring
# the thread that writes the files).
#
#   sh bench/html5_bench.sh [work dir] [files] [functions per file] [lines per function]
set -eu

cd "$(dirname "$0")/.."
DIR=${1:-/tmp/vemcov-bench-html5}
FILES=${2:-2000}
FUNCS=${3:-60}
LINES=${4:-18}
. bench/large_project.sh

for round in $(seq "$ROUNDS"); do
    echo "-- round $round"
    measure "vemcov -nohtml -html5 view" "$VEMCOV" -nopmeter -j 1 -nohtml -html5 "$(place view)"
    measure "vemcov (documented report)" "$VEMCOV" -nopmeter -j 1 -outdir "$(place report)"
    floor src "$(place view)" "$(place floor)"
    # Again over the view just written (a re-run), beside the floor of
    # writing the same bytes over the floor's files.
    measure "view, re-run" "$VEMCOV" -nopmeter -j 1 -nohtml -html5 "$(place view)"
    floor src "$(place view)" "$(place floor)" "read sources + write same over"
done
echo "== view: $(find "$(place view)" -type f | wc -l) files, $(du -sm "$(place view)" | cut -f1) MB"
summarize
finish
