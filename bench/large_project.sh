# large_project.sh -- sourced by the benchmarks of the full report on the
# 2.65-million-line project: builds vemcov and the benchmark tools, writes
# the project into $DIR, reads its sources once (so the first timed run
# does not pay for a cold page cache), moves into $DIR and defines measure.
#
# Expects DIR, FILES, FUNCS and LINES; sets VEMCOV and FLOOR.
if [ ! -x /usr/bin/time ]; then
    echo "$0: /usr/bin/time is missing (apt-get install time)" >&2
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

# measure <label> <command...>: one timed run, its output discarded.
measure() {
    label=$1
    shift
    /usr/bin/time -f '%e %U %S %M' -o time.txt "$@" >/dev/null 2>&1
    read -r wall user sys rss < time.txt
    printf '%-34s wall %6.2f s  user %5.2f s  system %5.2f s  peak memory %6d KiB\n' "$label" "$wall" "$user" "$sys" "$rss"
}
