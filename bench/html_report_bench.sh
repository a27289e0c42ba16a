#!/bin/sh
# Benchmark of the full HTML report on a large generated project: the time
# and peak memory of a run without and with -counts, beside the time it
# takes merely to read every source file (cat into /dev/null), which is the
# floor for a tool that copies every character of every source, and beside
# a run without HTML (the analysis alone).
#
#   sh bench/html_report_bench.sh [work dir] [files] [functions per file] [lines per function]
#
# Defaults: /tmp/vemcov-bench-html, 2000 files of 50 functions of 10 body
# lines: 100,000 functions in about 1.3 million source lines. Needs
# /usr/bin/time (Debian package "time"). Timings are printed, never checked.
set -eu

cd "$(dirname "$0")/.."
DIR=${1:-/tmp/vemcov-bench-html}
FILES=${2:-2000}
FUNCS=${3:-50}
LINES=${4:-10}

if [ ! -x /usr/bin/time ]; then
    echo "html_report_bench: /usr/bin/time is missing (apt-get install time)" >&2
    exit 1
fi

cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov generate_project >/dev/null

rm -rf "$DIR"
build/bench/generate_project "$DIR" "$FILES" "$FUNCS" "$LINES"
VEMCOV="$PWD/build/vemcov"

echo "== project: $FILES files, $((FILES * FUNCS)) functions, \
$(find "$DIR/src" -type f -exec cat {} + | wc -l) source lines, \
$(du -sh "$DIR/src" | cut -f1) of sources"

# Reads every source once, so that the first timed pass does not pay for a
# cold page cache.
find "$DIR/src" -type f -exec cat {} + >/dev/null

# One timed command: wall time, processor time and peak resident memory.
# On a shared machine the wall time follows the load; the processor times
# are the steadier figures.
measure() {
    label=$1
    shift
    /usr/bin/time -v "$@" >/dev/null 2>"$DIR/time.txt" || {
        cat "$DIR/time.txt" >&2
        exit 1
    }
    wall=$(sed -n 's/.*Elapsed (wall clock) time (h:mm:ss or m:ss): //p' "$DIR/time.txt")
    user=$(sed -n 's/.*User time (seconds): //p' "$DIR/time.txt")
    sys=$(sed -n 's/.*System time (seconds): //p' "$DIR/time.txt")
    rss=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$DIR/time.txt")
    printf '%-24s wall %8s  user %6ss  system %6ss  peak memory %7d KiB\n' "$label" "$wall" "$user" "$sys" "$rss"
}

measure "cat of every source" sh -c "find '$DIR/src' -type f -exec cat {} + >/dev/null"
cd "$DIR"
rm -rf CodeCoverage CODE_COVERAGE.HTML
measure "vemcov -nohtml" "$VEMCOV" -nopmeter -nohtml
measure "vemcov (HTML)" "$VEMCOV" -nopmeter
rm -rf CodeCoverage CODE_COVERAGE.HTML
measure "vemcov -counts (HTML)" "$VEMCOV" -nopmeter -counts
echo "== report: $(find CodeCoverage -type f | wc -l) files, $(du -sh CodeCoverage | cut -f1)"
