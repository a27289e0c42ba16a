#!/bin/sh
# Opens the example's report in headless Chromium, the way a reader would:
# the root page and its frames, then one source file's frameset, then a
# function of its list (tests/browser/check_report.mjs). Fails when a frame
# does not load. Leaves a screenshot of the file's frameset in
# examples/out/browser_check.png. Then the modern view of the same report
# (tests/browser/check_view.mjs): pages, links, keys, axe-core in both
# themes, a narrow screen; screenshots in examples/out/view-*.png.
#
# Needs Chromium (/usr/bin/chromium) and Node with npm; installs them when
# missing (tests/install-deps.sh), and playwright-core from the npm registry
# into tests/browser/node_modules.
set -eu

cd "$(dirname "$0")/.."
sh tests/install-deps.sh
sh examples/run.sh >/dev/null

cd tests/browser
if [ ! -d node_modules/playwright-core ] || [ ! -d node_modules/axe-core ]; then
    npm ci --no-audit --no-fund
fi
status=0
node check_report.mjs ../../examples/out/CodeCoverage ledger.cpp ../../examples/out/browser_check.png || status=1
node check_view.mjs ../../examples/out/view files/ledger.cpp.html ../../examples/out/view || status=1
exit "$status"
