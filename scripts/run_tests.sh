#!/bin/sh
# Runs all tests of a build, and says how many need the larger scenes of TV2_SCENES_DIR where that is not set.
#     scripts/run_tests.sh BUILD [CTEST-OPTION...]
set -u
build="$1"
shift
status=0
ctest --test-dir "$build" --output-on-failure --no-tests=error -j"$(nproc)" "$@" || status=$?
skipped=$(grep -a -c 'is not in TV2_SCENES_DIR' "$build/Testing/Temporary/LastTest.log")
[ "$skipped" -eq 0 ] || echo "$skipped of the skipped tests need larger scenes: make test SCENES=FOLDER"
exit "$status"
