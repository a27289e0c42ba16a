#!/bin/sh
# The modern view's cost (-nohtml -html5) on a generated project of 2,000
# files, 120,000 functions and 2.65 million source lines, beside the
# documented report's and beside the floor of reading the sources and
# writing the view's files with the same bytes (bench/write_floor), in the
# same run, three rounds. Printed, never checked; the goal is at most 0.7 s
# wall and 64 MiB for the view.
#
#   sh bench/html5_bench.sh [work dir] [files] [functions per file] [lines per function]
set -eu

cd "$(dirname "$0")/.."
DIR=${1:-/tmp/vemcov-bench-html5}
FILES=${2:-2000}
FUNCS=${3:-60}
LINES=${4:-18}
if [ ! -x /usr/bin/time ]; then
    echo "html5_bench: /usr/bin/time is missing (apt-get install time)" >&2
    exit 1
fi
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov generate_project write_floor >/dev/null
VEMCOV=$PWD/build/vemcov
FLOOR=$PWD/build/bench/write_floor

rm -rf "$DIR"
build/bench/generate_project "$DIR" "$FILES" "$FUNCS" "$LINES"
echo "== project: $FILES files, $((FILES * FUNCS)) functions, $(cat "$DIR"/src/*.c | wc -l) source lines"
cat "$DIR"/src/*.c >/dev/null
cd "$DIR"

measure() {
    label=$1
    shift
    /usr/bin/time -f '%e %U %S %M' -o time.txt "$@" >/dev/null 2>&1
    read -r wall user sys rss < time.txt
    printf '%-34s wall %6.2f s  user %5.2f s  system %5.2f s  peak memory %6d KiB\n' "$label" "$wall" "$user" "$sys" "$rss"
}

for round in 1 2 3; do
    echo "-- round $round"
    rm -rf view
    sync
    measure "vemcov -nohtml -html5 view" "$VEMCOV" -nopmeter -nohtml -html5 view
    rm -rf CodeCoverage CODE_COVERAGE.HTML
    sync
    measure "vemcov (documented report)" "$VEMCOV" -nopmeter
    rm -rf floor-copy
    sync
    "$FLOOR" src view floor-copy
done
echo "== view: $(find view -type f | wc -l) files, $(du -sm view | cut -f1) MB"
