#!/bin/sh
# One scene gives one file, whatever compiler and optimisation level the exporter was built with: builds the plug-in
# (exporter and format library) in four ways, exports the samples with each under a clock and user that stand still,
# and compares the bytes. The command and its host are those of build/.
set -eu
cd "$(dirname "$0")/.."

presets="gcc-o0 gcc-o2 clang-o0 clang-o2"
plugin=tv2_export_tool_fixed_clock
for preset in $presets; do
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --target $plugin
    rm -rf "build/$preset/exported"
    mkdir -p "build/$preset/exported"
    for scene in samples/*.dae samples/*.glb; do
        # Every build writes to the same relative path, since that stands in the file.
        (cd "build/$preset" && ../bin/tv2 export --quiet --all-takes --plugin lib/tv2/$plugin.so \
            "../../$scene" "exported/$(basename "$scene" | tr . _).tv2")
    done
done

passed=0
failed=0
for file in build/gcc-o0/exported/*.tv2; do
    for preset in gcc-o2 clang-o0 clang-o2; do
        if cmp "$file" "build/$preset/exported/$(basename "$file")"; then
            passed=$((passed + 1))
        else
            failed=$((failed + 1))
        fi
    done
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
