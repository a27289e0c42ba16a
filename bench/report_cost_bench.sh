#!/bin/sh
# The cost of the documented report beside the floor under it, in one run:
# a generated project of 2,000 files, 120,000 functions and 2.65 million
# source lines; vemcov without HTML and with the full report, also with
# -j 1 and -j 2, the report and -j 2 also over their own earlier files (user and system time, wall
# time, peak memory), and the time it takes merely to read every source and
# write a tree of the same files with the same bytes (bench/write_floor),
# both into a new directory and over the files of the round's first run. Each command runs ROUNDS times (5
# unless set) and the medians close the output, with the goals beside them;
# never checked.
#
#   sh bench/report_cost_bench.sh [work dir] [files] [functions per file] [lines per function] [baseline vemcov]
#
# With a baseline binary (an older build), it is timed beside, in the same
# rounds.
set -eu

cd "$(dirname "$0")/.."
DIR=${1:-/tmp/vemcov-bench-cost}
FILES=${2:-2000}
FUNCS=${3:-60}
LINES=${4:-18}
BASELINE=${5:-}
. bench/large_project.sh

for round in $(seq "$ROUNDS"); do
    echo "-- round $round"
    # How fast this processor is at the moment, alone and beside the other:
    # user times grow with both (bench/core_sharing).
    "$BUILD/bench/core_sharing"
    measure "vemcov -nohtml" "$VEMCOV" -nopmeter -nohtml
    if [ -n "$BASELINE" ]; then
        measure "baseline -nohtml" "$BASELINE" -nopmeter -nohtml
        measure "baseline (documented report)" "$BASELINE" -nopmeter -outdir "$(place baseline)"
    fi
    measure "vemcov (documented report)" "$VEMCOV" -nopmeter -outdir "$(place report)"
    floor src "$(place report)" "$(place floor)"
    # Again over the report just written (a re-run: its files are written
    # over in place), beside the floor of writing the same bytes over the
    # floor's files: neither needs new files, disk blocks or cache pages.
    measure "vemcov (documented report, re-run)" "$VEMCOV" -nopmeter -outdir "$(place report)"
    floor src "$(place report)" "$(place floor)" "read sources + write same over"
    # On one thread (the default runs a thread that writes the files on a
    # machine with two processors), and with -j 2, where the run also
    # writes pages itself when that thread falls behind. Again over its
    # files.
    measure "vemcov (documented report, -j 1)" "$VEMCOV" -nopmeter -j 1 -outdir "$(place report-j1)"
    measure "vemcov (documented report, -j 2)" "$VEMCOV" -nopmeter -j 2 -outdir "$(place report-j2)"
    measure "vemcov (-j 2, re-run)" "$VEMCOV" -nopmeter -j 2 -outdir "$(place report-j2)"
    if [ -n "$BASELINE" ]; then
        measure "baseline (documented report, -j 2)" "$BASELINE" -nopmeter -j 2 -outdir "$(place baseline-j2)"
    fi
    # The same report into memory (tmpfs), where no disk is written: the
    # processor's share alone. The disk's interrupts are charged partly to
    # whatever process runs when they come, so user time on the disk varies
    # with the disk's load.
    if [ -d /dev/shm ]; then
        rm -rf /dev/shm/vemcov-bench-report
        measure "vemcov (documented report, tmpfs)" "$VEMCOV" -nopmeter -outdir /dev/shm/vemcov-bench-report
        rm -rf /dev/shm/vemcov-bench-report
    fi
done
summarize
finish
echo "== goals: documented report user <= 0.40 s and wall <= 1.15 x the floor's wall;"
echo "   -nohtml user <= 0.20 s; peak memory <= 64 MiB (65536 KiB); -j 2 at least 1.4 x faster than -j 1"
