#!/bin/sh
# Times the fast road on a generated project: each of the four coverage
# files and the call-graph file alone, two of them again with infeasible-code
# markers, with /usr/bin/time -v (elapsed time and peak memory), then the
# call graph's bucket chains.
#
#   bench/fast_road_bench.sh [build dir] [files] [functions-per-file]
#
# Defaults: build/, 1000 files of 100 functions (100,000 functions). The
# project is written to /tmp/vemcov-fast-road-bench and left there.
set -eu

BUILD=${1:-build}
FILES=${2:-1000}
PER_FILE=${3:-100}
DIR=/tmp/vemcov-fast-road-bench
VEMCOV=$(cd "$BUILD" && pwd)/vemcov
BENCH=$(cd "$BUILD/bench" && pwd)

rm -rf "$DIR"
"$BENCH/fast_road_project" "$DIR" "$FILES" "$PER_FILE" 12
echo "project: $FILES files x $PER_FILE functions;" \
    "vemtra.spi $(wc -c < "$DIR/vemtra.spi") bytes, vemtra.dpi $(wc -c < "$DIR/vemtra.dpi") bytes"

cd "$DIR"
# time <label> <output> <options...>: one run, its times and peak memory.
time_run() {
    label=$1
    out=$2
    shift 2
    /usr/bin/time -v "$VEMCOV" -nopmeter "$@" 2> time.log > /dev/null || {
        cat time.log
        exit 1
    }
    elapsed=$(sed -n 's/.*Elapsed (wall clock) time (h:mm:ss or m:ss): //p' time.log)
    user=$(sed -n 's/.*User time (seconds): //p' time.log)
    system=$(sed -n 's/.*System time (seconds): //p' time.log)
    peak=$(sed -n 's/.*Maximum resident set size (kbytes): //p' time.log)
    printf '%-18s elapsed %s  user %ss  system %ss  peak %s kB  output %s bytes\n' \
        "$label" "$elapsed" "$user" "$system" "$peak" "$(wc -c < "$out")"
}

for option in -txtfcvrg -xmlfcvrg -txtbcvrg -xmlbcvrg -txtdcg; do
    time_run "$option" "out$option" "$option" "out$option"
done
# With infeasible-code markers ("// mix" comments), each file's sources are
# scanned for its functions.
time_run "-txtfcvrg markers" out-markers -txtfcvrg out-markers -onelinedsbl mix
time_run "-txtbcvrg markers" out-markers -txtbcvrg out-markers -onelinedsbl mix

"$BENCH/call_graph_chains" "$DIR/vemtra.spi" "$DIR/vemtra.dpi"
