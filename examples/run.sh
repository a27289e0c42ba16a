#!/bin/sh
# Builds vemcov and runs it on the bundled example project (examples/src):
# the profiles of two runs of the example program are generated into
# examples/out, and vemcov reports on them there.
set -eu

cd "$(dirname "$0")/.."
sh tests/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov make_example_profiles

rm -rf examples/out
mkdir -p examples/out
build/examples/make_example_profiles "$PWD/examples/src" examples/out

cd examples/out
echo "== vemcov -prj Example -counts -onelinedsbl NOT_FEASIBLE (in examples/out)"
status=0
../../build/vemcov -prj Example -counts -onelinedsbl NOT_FEASIBLE || status=$?
echo "== exit status $status"

if [ -f CODE_COVERAGE.HTML ]; then
    echo "Report: examples/out/CODE_COVERAGE.HTML (open it in a browser)"
else
    echo "No HTML report was written (this build does not write the report yet)."
fi
exit "$status"
