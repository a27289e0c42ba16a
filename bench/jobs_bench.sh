#!/bin/sh
# -j on the 2.65-million-line benchmark project: the documented report with
# -j 1 and -j 2, three rounds, each into a fresh directory; beside it, what a
# second thread gains in merely creating the same number of files of the
# same size in one directory (bench/create_files), which bounds what -j can
# gain where file creation dominates. Printed, never checked.
#
#   sh bench/jobs_bench.sh [work dir]
set -eu

cd "$(dirname "$0")/.."
DIR=${1:-/tmp/vemcov-bench-jobs}
if [ ! -x /usr/bin/time ]; then
    echo "jobs_bench: /usr/bin/time is missing (apt-get install time)" >&2
    exit 1
fi
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov generate_project create_files >/dev/null
VEMCOV=$PWD/build/vemcov
CREATE=$PWD/build/bench/create_files

# Nothing is deleted while the runs are timed (see bench/large_project.sh:
# the file system here steps over recently freed inodes when it creates
# files): the previous work directory is set aside and deleted at the end.
if [ -e "$DIR" ]; then
    mv "$DIR" "$DIR.old.$$"
fi
build/bench/generate_project "$DIR" 2000 60 18
cat "$DIR"/src/*.c >/dev/null
cd "$DIR"
mkdir out
sync
for round in 1 2 3; do
    for jobs in 1 2; do
        sync
        /usr/bin/time -f '%e %U %S' -o time.txt "$VEMCOV" -nopmeter -j "$jobs" -outdir "out/r$round-j$jobs" >/dev/null 2>&1
        read -r wall user sys < time.txt
        printf 'vemcov -j %d   wall %6.2f s  user %5.2f s  system %5.2f s\n' "$jobs" "$wall" "$user" "$sys"
    done
    for threads in 1 2; do
        mkdir "out/c$round-$threads"
        sync
        "$CREATE" "$threads" "out/c$round-$threads" 20000 16000
    done
done
cd /
rm -rf "$DIR/out" "$DIR".old.*
