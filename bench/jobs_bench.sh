#!/bin/sh
# -j on the 2.65-million-line benchmark project: the documented report with
# -j 1 and -j 2, ROUNDS rounds (5 unless set) and their medians, each run
# into a new directory; beside it, what a second thread gains in merely
# creating the same number of files of the same size in one directory
# (bench/create_files), which bounds what -j can gain where file creation
# dominates. Printed, never checked.
#
#   sh bench/jobs_bench.sh [work dir]
set -eu

cd "$(dirname "$0")/.."
DIR=${1:-/tmp/vemcov-bench-jobs}
FILES=2000
FUNCS=60
LINES=18
. bench/large_project.sh
cmake --build "$BUILD" -j2 --target create_files >/dev/null
CREATE=$BUILD/bench/create_files

for round in $(seq "$ROUNDS"); do
    echo "-- round $round"
    for jobs in 1 2; do
        measure "vemcov -j $jobs" "$VEMCOV" -nopmeter -j "$jobs" -outdir "$(place "j$jobs")"
    done
    for threads in 1 2; do
        mkdir "$(place "create$threads")"
        settle
        "$CREATE" "$threads" "$(place "create$threads")" 20000 16000
    done
done
summarize
finish
