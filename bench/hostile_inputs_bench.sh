#!/bin/sh
# Times vemcov on hostile inputs, mostly at n, 2n and 4n (bench/hostile_inputs.cpp
# says what each kind is), with elapsed time and peak memory from
# /usr/bin/time. A linear or n log n path roughly doubles from column to
# column; a quadratic one quadruples.
#
#   bench/hostile_inputs_bench.sh [build dir] [baseline vemcov]
#
# With a second vemcov binary (an older build, say), every run is repeated
# with it beside the first; a run of either that passes 60 s is stopped and
# shown as ">60". The inputs are written below /tmp/vemcov-hostile-bench.
set -eu

BUILD=${1:-build}
BASELINE=${2:-}
VEMCOV=$(cd "$BUILD" && pwd)/vemcov
GENERATE=$(cd "$BUILD/bench" && pwd)/hostile_inputs
ROOT=/tmp/vemcov-hostile-bench
LIMIT=60

# run <binary> <dir> <options...>: "<seconds>s <peak MB>MB <status>"
run() {
    binary=$1
    dir=$2
    shift 2
    rm -rf "$dir/CodeCoverage" "$dir/CODE_COVERAGE.HTML"
    set +e
    (cd "$dir" && timeout "$LIMIT" /usr/bin/time -f '%e %M' -o time.log "$binary" -nopmeter "$@" \
        > /dev/null 2> stderr.log)
    status=$?
    set -e
    if [ "$status" = 124 ]; then
        printf '>%ss' "$LIMIT"
        return
    fi
    # time writes "Command exited with non-zero status N" before its figures.
    awk -v status="$status" 'END { printf "%ss %.0fMB status %s", $1, $2 / 1024, status }' "$dir/time.log"
    if [ -d "$dir/CodeCoverage" ]; then
        printf ' report %sMB' "$(du -sm "$dir/CodeCoverage" | cut -f1)"
    fi
}

# bench <kind> <sizes> <options...>
bench() {
    kind=$1
    sizes=$2
    shift 2
    for size in $sizes; do
        dir=$ROOT/$kind-$size
        rm -rf "$dir"
        mkdir -p "$dir"
        "$GENERATE" "$kind" "$dir" "$size"
        line=$(printf '%-10s n=%-8s now: %s' "$kind" "$size" "$(run "$VEMCOV" "$dir" "$@")")
        if [ -n "$BASELINE" ]; then
            line="$line   baseline: $(run "$BASELINE" "$dir" "$@")"
        fi
        echo "$line"
    done
}

bench sort "50000 100000 200000"
bench addresses "10000 20000 40000" -nohtml
bench blocks "25000 50000 100000" -txtbcvrg blocks.txt
bench blocks "25000 50000 100000" -nohtml -txtbcvrgfull blocks-full.txt
bench line "10000 20000 40000"
# Under -counts a line of n adjacent markers gets n counter lines, each as
# wide as its marker's column: the report itself grows as n squared.
bench line "10000 20000 40000" -counts
# The memory bomb: n segments naming one string of n x 512 bytes; 2,000
# segments make a 1.2 MB file, 20,000 a file ten times larger.
bench bomb "2000 20000" -nohtml
