#!/bin/sh
# Builds vemcov and runs it on the bundled example project (examples/src, a
# small C++ stock-ledger program): the profiles that two runs of the program
# leave are generated into examples/out, and vemcov writes its full report
# there, with execution counts and the example's infeasible-code markers,
# and the modern view of the same report into examples/out/view.
set -eu

cd "$(dirname "$0")/.."
sh tests/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j2 --target vemcov make_example_profiles

rm -rf examples/out
mkdir -p examples/out
build/examples/make_example_profiles "$PWD/examples/src" examples/out

cd examples/out
OPTIONS="-prj Ledger -counts -onelinedsbl NOT_FEASIBLE -beginblkdsbl BEGIN_DEBUG_ONLY -endblkdsbl END_DEBUG_ONLY -html5 view"
echo "== vemcov $OPTIONS (in examples/out)"
status=0
# shellcheck disable=SC2086
../../build/vemcov $OPTIONS || status=$?
echo "== exit status $status"

if [ -f CODE_COVERAGE.HTML ]; then
    echo "Report: open examples/out/CODE_COVERAGE.HTML in a browser"
    echo "        or the modern view, examples/out/view/index.html"
fi
exit "$status"
