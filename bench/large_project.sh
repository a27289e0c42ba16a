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

# Rounds of each benchmark (ROUNDS in the environment, 5 unless set): the
# file system's own background work makes single runs vary by a factor of
# two, so the medians are printed at the end.
ROUNDS=${ROUNDS:-5}
: > results.txt

# fresh <path...>: removes what a run is about to write, writes everything
# out and waits SETTLE seconds (30 unless set). The file system avoids
# reusing inodes freed in the last half minute or so, so creating thousands
# of files right after deleting as many costs far more, and by chance; after
# the wait every run creates its files under the same conditions.
SETTLE=${SETTLE:-30}
fresh() {
    rm -rf "$@"
    sync
    sleep "$SETTLE"
}

# measure <label> <command...>: one timed run, its output discarded.
measure() {
    label=$1
    shift
    /usr/bin/time -f '%e %U %S %M' -o time.txt "$@" >/dev/null 2>&1
    read -r wall user sys rss < time.txt
    printf '%-34s wall %6.2f s  user %5.2f s  system %5.2f s  peak memory %6d KiB\n' "$label" "$wall" "$user" "$sys" "$rss"
    printf '%s|%s|%s|%s|%s\n' "$label" "$wall" "$user" "$sys" "$rss" >> results.txt
}

# floor <source dir> <report dir> <scratch dir>: the floor's run, its line
# printed and kept with the others.
floor() {
    line=$("$FLOOR" "$@")
    echo "$line"
    echo "$line" | awk '{ printf "%s|%s|%s|%s|0\n", "read sources + write same report", $8, $11, $14 }' >> results.txt
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
