#!/bin/sh
# What the exports cost: a large generated project reported with and
# without -lcov -cobertura -json, on the full report and with -nohtml, each
# run's elapsed time, user time and peak memory side by side, and the sizes
# of the exports.
#
#   sh bench/exports_bench.sh [work dir] [files] [functions per file] [lines per function]
#
# Defaults: /tmp/vemcov-bench-exports, 2000 files of 60 functions of 10 body
# lines (120,000 functions). Needs /usr/bin/time. Timings are printed, never
# checked.
set -eu

cd "$(dirname "$0")/.."
DIR=${1:-/tmp/vemcov-bench-exports}
FILES=${2:-2000}
FUNCS=${3:-60}
LINES=${4:-10}

cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov generate_project >/dev/null

rm -rf "$DIR"
build/bench/generate_project "$DIR" "$FILES" "$FUNCS" "$LINES"
VEMCOV="$PWD/build/vemcov"
echo "== project: $FILES files, $((FILES * FUNCS)) functions," \
    "$(find "$DIR/src" -type f -exec cat {} + | wc -l) source lines"
find "$DIR/src" -type f -exec cat {} + >/dev/null

# run <label> <options...>: the best of three runs.
run() {
    label=$1
    shift
    best=""
    for attempt in 1 2 3; do
        rm -rf "$DIR/CodeCoverage" "$DIR/CODE_COVERAGE.HTML" "$DIR"/cov.*
        (cd "$DIR" && /usr/bin/time -f '%e %U %M' -o time.log "$VEMCOV" -nopmeter "$@" >/dev/null 2>&1)
        figures=$(cat "$DIR/time.log")
        if [ -z "$best" ] || [ "$(echo "$figures $best" | awk '{ print ($1 < $4) }')" = 1 ]; then
            best=$figures
        fi
    done
    echo "$best" | awk -v label="$label" '{ printf "%-34s elapsed %5.2f s  user %5.2f s  peak %4.0f MB\n", label, $1, $2, $3 / 1024 }'
}

EXPORTS="-lcov cov.info -cobertura cov.xml -json cov.json"
run "full report"
# shellcheck disable=SC2086
run "full report + exports" $EXPORTS
run "-nohtml" -nohtml
# shellcheck disable=SC2086
run "-nohtml + exports" -nohtml $EXPORTS
echo "exports: $(du -h "$DIR/cov.info" | cut -f1) LCOV, $(du -h "$DIR/cov.xml" | cut -f1) Cobertura," \
    "$(du -h "$DIR/cov.json" | cut -f1) JSON"
