# large_project.sh -- sourced by the benchmarks of the full report on the
# 2.65-million-line project: builds vemcov and the benchmark tools, writes
# the project into $DIR, reads its sources once (so the first timed run
# does not pay for a cold page cache), moves into $DIR and defines measure,
# floor, place, summarize and finish.
#
# Expects DIR, FILES, FUNCS and LINES; sets BUILD, VEMCOV and FLOOR.
#
# Nothing is deleted on the disk while the runs are timed. The file system
# here (ext4 without a journal) does not reuse an inode freed in the last
# minute, or in the last six while the block of the inode table that holds
# it is unwritten: each file created in a block group that holds such
# inodes first steps over all of them, so creating 20,000 files soon after
# deleting as many costs two to three times as much, and by chance. So
# every run that creates files writes into a new directory (place), the
# previous work directory is set aside rather than deleted, and both are
# deleted by finish, after the last run. Start a benchmark six minutes or
# more after deleting many files near the work directory (the last
# benchmark's finish), or its file-creating runs pay for those inodes.
if [ ! -x /usr/bin/time ]; then
    echo "$0: /usr/bin/time is missing (apt-get install time)" >&2
    exit 1
fi
# Rounds of each benchmark (ROUNDS in the environment, 5 unless set): the
# file system's own background work makes single runs vary by a factor of
# two, so the medians are printed at the end.
ROUNDS=${ROUNDS:-5}
# Every run's files are kept until the end (see above): a round of the
# largest benchmark writes about 1.5 GB, and a series run with KEEP=1 adds
# up until its work directories are deleted.
free_mb=$(df -Pm "$(dirname "$DIR")" | awk 'NR == 2 { print $4 }')
if [ "$free_mb" -lt $((ROUNDS * 1500 + 4000)) ]; then
    echo "$0: only $free_mb MB free beside $DIR, too little for $ROUNDS rounds;" \
        "delete older work directories ($DIR.old.*, those kept with KEEP=1)" >&2
    exit 1
fi
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov generate_project write_floor warm_memory core_sharing >/dev/null
BUILD=$PWD/build
VEMCOV=$BUILD/vemcov
FLOOR=$BUILD/bench/write_floor
WARM=$BUILD/bench/warm_memory

if [ -e "$DIR" ]; then
    mv "$DIR" "$DIR.old.$$"
fi
build/bench/generate_project "$DIR" "$FILES" "$FUNCS" "$LINES"
echo "== project: $FILES files, $((FILES * FUNCS)) functions, $(cat "$DIR"/src/*.c | wc -l) source lines"
cat "$DIR"/src/*.c >/dev/null
cd "$DIR"

: > results.txt

mkdir runs
sync

# place <name>: a directory for one run to create its files in, new in
# every round (below runs/, not there yet).
place() {
    echo "$DIR/runs/$1-$round"
}

# finish: deletes every run's files and the previous work directory, unless
# KEEP=1 (for benchmarks run one after another: the next one would pay for
# the deleted inodes; delete the work directories after the last).
finish() {
    cd /
    if [ "${KEEP:-0}" != 1 ]; then
        rm -rf "$DIR/runs" "$DIR".old.*
    fi
}

# settle: writes out what earlier runs left for the disk, and touches and
# frees 1 GiB (bench/warm_memory), so that the run finds free memory the
# host backs: this virtual machine's kernel hands freed memory back to the
# host after a few seconds, and touching it again then costs the host's
# backing (creating the report's files took 0.6 s at one moment and 1.8 s at
# another without this, 0.55 to 0.70 s with it). The kernel's cache of file
# pages is not emptied: tried here, that made every run's processor time
# half as much again.
settle() {
    sync
    "$WARM" 1024
}

# measure <label> <command...>: one timed run, its output discarded.
measure() {
    label=$1
    shift
    settle
    /usr/bin/time -f '%e %U %S %M' -o time.txt "$@" >/dev/null 2>&1
    read -r wall user sys rss < time.txt
    printf '%-34s wall %6.2f s  user %5.2f s  system %5.2f s  peak memory %6d KiB\n' "$label" "$wall" "$user" "$sys" "$rss"
    printf '%s|%s|%s|%s|%s\n' "$label" "$wall" "$user" "$sys" "$rss" >> results.txt
}

# floor <source dir> <report dir> <scratch dir> [label]: the floor's run,
# its line printed and kept with the others (the floor tool syncs and
# warms memory itself, after loading the report's bytes). A scratch dir that an earlier
# floor run of the round wrote is written over in place, as vemcov writes
# over an earlier report.
floor() {
    line=$("$FLOOR" "$@")
    echo "$line"
    echo "$line" | awk '{
        label = $0; sub(/ +wall .*/, "", label)
        for (i = 1; i < NF; i++) { if ($i == "wall") w = $(i + 1); if ($i == "user") u = $(i + 1); if ($i == "system") s = $(i + 1) }
        printf "%s|%s|%s|%s|0\n", label, w, u, s }' >> results.txt
}

# summarize: the median of every measure over the rounds.
summarize() {
    echo "== medians over $ROUNDS rounds"
    awk -F'|' '
        { n[$1]++; wall[$1, n[$1]] = $2; user[$1, n[$1]] = $3; sys[$1, n[$1]] = $4; rss[$1, n[$1]] = $5
          if (!($1 in seen)) { seen[$1] = 1; order[++labels] = $1 } }
        function median(values, label, count,    i, j, t, a) {
            for (i = 1; i <= count; i++) a[i] = values[label, i] + 0
            for (i = 2; i <= count; i++) for (j = i; j > 1 && a[j - 1] > a[j]; j--) { t = a[j]; a[j] = a[j - 1]; a[j - 1] = t }
            return count % 2 ? a[(count + 1) / 2] : (a[count / 2] + a[count / 2 + 1]) / 2
        }
        END {
            for (k = 1; k <= labels; k++) {
                l = order[k]
                printf "%-34s wall %6.2f s  user %5.2f s  system %5.2f s", l,
                       median(wall, l, n[l]), median(user, l, n[l]), median(sys, l, n[l])
                if (median(rss, l, n[l]) > 0)
                    printf "  peak memory %6d KiB", median(rss, l, n[l])
                printf "\n"
            }
        }' results.txt
}
