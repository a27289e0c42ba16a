#!/bin/sh
# The whole path from a real compiler to a vemcov report, on the bundled
# example: build examples/src with clang's coverage instrumentation, run it
# on a few inputs, merge and export the coverage with llvm-cov, turn it into
# vemtra.spi and vemtra.dpi with vemcov-import, and report with vemcov.
# Everything is written below examples/out-clang.
set -eu

cd "$(dirname "$0")/.."
ROOT=$PWD
sh tests/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov vemcov-import

OUT=$ROOT/examples/out-clang
rm -rf "$OUT"
mkdir -p "$OUT"
cd "$OUT"

echo "== build the example with clang's coverage instrumentation"
clang++ -O0 -fprofile-instr-generate -fcoverage-mapping -o ledger "$ROOT"/examples/src/*.cpp

echo "== run it three times"
printf 'apple 3 1.5\npear x 2\nfig 2 0.5\n' | LLVM_PROFILE_FILE=run1.profraw ./ledger
printf 'plum 7 0.25\n' | LLVM_PROFILE_FILE=run2.profraw ./ledger
LLVM_PROFILE_FILE=run3.profraw ./ledger </dev/null

echo "== merge and export the coverage"
llvm-profdata merge -o ledger.profdata run1.profraw run2.profraw run3.profraw
llvm-cov export -format=text -instr-profile=ledger.profdata ./ledger > export.json
llvm-cov report -instr-profile=ledger.profdata ./ledger

echo "== import it as vemcov's profiles"
"$ROOT/build/vemcov-import" llvm export.json -runs 3

echo "== report"
status=0
"$ROOT/build/vemcov" -prj "Ledger (clang)" -counts -json summary.json || status=$?
echo "== exit status $status"
if [ -f CODE_COVERAGE.HTML ]; then
    echo "Report: open examples/out-clang/CODE_COVERAGE.HTML in a browser"
    echo "        (its totals equal llvm-cov report's TOTAL row above: Functions, Regions and their missed ones)"
fi
exit "$status"
