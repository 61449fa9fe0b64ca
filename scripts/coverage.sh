#!/bin/sh
# Runs what the coverage build has of tests and reports the lines of the format library and of the exporter that they
# reach, each in a table of its files; fails when either has less than 95 %.
set -eu
cd "$(dirname "$0")/.."
build=build/coverage
find $build -name '*.gcda' -delete
(cd $build && ctest --output-on-failure --no-tests=error -j"$(nproc)" -R '^[A-Z]|Gates')
# Only the folders of those tests: others below the build folder may be left from older sources, which no longer fit.
gcovr --root . --filter tev2_loader/ --filter exporter/ --exclude-throw-branches --json $build/lines.json \
    $build/tev2_loader $build/exporter $build/tests/tev2_loader $build/tests/exporter $build/tests/support
enough=0
for room in tev2_loader exporter; do
    gcovr --root . --filter "$room/" --add-tracefile $build/lines.json --fail-under-line 95 || enough=1
done
exit $enough
