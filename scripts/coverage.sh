#!/bin/sh
# Runs what the coverage build has of tests and reports the lines of the format library and the exporter that they reach;
# fails below 95 %.
set -eu
cd "$(dirname "$0")/.."
build=build/coverage
find $build -name '*.gcda' -delete
(cd $build && ctest --output-on-failure --no-tests=error -j"$(nproc)" -R '^[A-Z]|Gates')
gcovr --root . --filter tev2_loader/ --filter exporter/ --exclude-throw-branches --fail-under-line 95 $build
