#!/bin/sh
# One scene gives one file, whatever compiler and optimisation level the exporter was built with: builds the four
# combinations, exports the samples with each under a clock and user that stand still, and compares the bytes.
set -eu
cd "$(dirname "$0")/.."

presets="gcc-o0 gcc-o2 clang-o0 clang-o2"
failed=0
passed=0
for preset in $presets; do
    cmake --preset "$preset" >/dev/null
    cmake --build "build/$preset" --target tv2 tv2_export_tool_fixed_clock
    rm -rf "build/$preset/exported"
    mkdir -p "build/$preset/exported"
done
for scene in samples/*.dae samples/*.glb samples/*.bvh; do
    [ -e "$scene" ] || continue
    name=$(basename "$scene" | tr . _)
    for preset in $presets; do
        # Every build writes to the same relative path, which stands in the file.
        (cd "build/$preset" &&
            bin/tv2 export --quiet --all-takes --plugin lib/tv2/tv2_export_tool_fixed_clock.so \
                "../../$scene" "exported/$name.tv2")
    done
    for file in build/gcc-o0/exported/"$name"*.tv2; do
        for preset in gcc-o2 clang-o0 clang-o2; do
            if cmp "$file" "build/$preset/exported/$(basename "$file")"; then
                passed=$((passed + 1))
            else
                failed=$((failed + 1))
            fi
        done
    done
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
