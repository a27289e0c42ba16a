#!/bin/sh
# Benchmark of vemcov-import on a large real export: a generated C++ program
# of many small functions (branches, loops, a macro, templates) is built
# with clang's coverage instrumentation and run; then, in the same run,
# llvm-cov export writes its JSON and vemcov-import reads it, each timed
# with its peak memory, and the import of the same export gzip-compressed.
#
#   sh bench/import_bench.sh [work dir] [files] [functions per file]
#
# Defaults: /tmp/vemcov-bench-import, 105 files of 400 functions: an export
# of about 100 MB. Building the program takes about half a minute on two cores.
# Needs /usr/bin/time (Debian package "time"). Timings are printed, never
# checked.
set -eu

cd "$(dirname "$0")/.."
DIR=${1:-/tmp/vemcov-bench-import}
FILES=${2:-105}
FUNCS=${3:-400}

if [ ! -x /usr/bin/time ]; then
    echo "import_bench: /usr/bin/time is missing (apt-get install time)" >&2
    exit 1
fi
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov-import >/dev/null
IMPORT="$PWD/build/vemcov-import"

rm -rf "$DIR"
mkdir -p "$DIR/src"
cd "$DIR"

# One header of templates and a macro, and FILES sources of FUNCS functions
# each; main calls every function of every other file.
cat > src/common.h <<'HEADER'
#define CLAMP(x, lo, hi) ((x) < (lo) ? (lo) : ((x) > (hi) ? (hi) : (x)))
template <typename T> T pick(T a, T b, bool first) { return first ? a : b; }
HEADER
awk -v files="$FILES" -v funcs="$FUNCS" 'BEGIN {
    for (f = 0; f < files; f++) {
        out = sprintf("src/unit%d.cpp", f);
        print "#include \"common.h\"" > out;
        for (i = 0; i < funcs; i++) {
            printf "int f%d_%d(int n)\n{\n    int s = 0;\n", f, i > out;
            printf "    for (int k = 0; k < n; k++) {\n        if (k %% 3 == 0 && n > %d)\n            s += CLAMP(k, 1, %d);\n", i % 7, i > out;
            printf "        else\n            s -= pick<int>(k, %d, k > 2);\n    }\n    return s > 0 ? s : -s;\n}\n", f > out;
        }
        printf "int run_unit%d(int n)\n{\n    int s = 0;\n", f > out;
        for (i = 0; i < funcs; i++)
            if ((i + f) % 2 == 0)
                printf "    s += f%d_%d(n);\n", f, i > out;
        print "    return s;\n}" > out;
        close(out);
    }
    out = "src/main.cpp";
    for (f = 0; f < files; f++)
        printf "int run_unit%d(int n);\n", f > out;
    print "int main(int argc, char **)\n{\n    int s = 0;" > out;
    for (f = 0; f < files; f++)
        if (f % 5 != 0)
            printf "    s += run_unit%d(argc + 3);\n", f > out;
    print "    return s == 12345 ? 1 : 0;\n}" > out;
}'

echo "== building $FILES files of $FUNCS functions with clang's coverage"
start=$(date +%s)
ls src/*.cpp | xargs -P 2 -n 8 sh -c 'for s; do clang++ -O0 -fprofile-instr-generate -fcoverage-mapping -c "$s" -o "${s%.cpp}.o"; done' sh
clang++ -fprofile-instr-generate -o program src/*.o
echo "   built in $(($(date +%s) - start)) s"
LLVM_PROFILE_FILE=run.profraw ./program
llvm-profdata merge -o program.profdata run.profraw

measure() {
    label=$1
    shift
    /usr/bin/time -v "$@" 2>time.txt >"$OUTFILE" || {
        cat time.txt >&2
        exit 1
    }
    wall=$(sed -n 's/.*Elapsed (wall clock) time (h:mm:ss or m:ss): //p' time.txt)
    user=$(sed -n 's/.*User time (seconds): //p' time.txt)
    sys=$(sed -n 's/.*System time (seconds): //p' time.txt)
    rss=$(sed -n 's/.*Maximum resident set size (kbytes): //p' time.txt)
    printf '%-34s wall %8s  user %6ss  system %6ss  peak memory %7d KiB\n' "$label" "$wall" "$user" "$sys" "$rss"
}

OUTFILE=export.json measure "llvm-cov export" llvm-cov export -format=text -instr-profile=program.profdata ./program
echo "== export: $(du -m export.json | cut -f1) MB, $(grep -o '"name":' export.json | wc -l) function records"
gzip -k -1 export.json
OUTFILE=/dev/null measure "vemcov-import llvm" "$IMPORT" llvm export.json -o imported
"$IMPORT" llvm export.json -o imported
OUTFILE=/dev/null measure "vemcov-import llvm (gzipped)" "$IMPORT" llvm export.json.gz -o imported-gz
echo "== profiles: vemtra.spi $(du -k imported/vemtra.spi | cut -f1) KiB, vemtra.dpi $(du -k imported/vemtra.dpi | cut -f1) KiB"
