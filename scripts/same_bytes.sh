#!/bin/sh
# One scene gives one file, whatever compiler, optimisation level and system the exporter was built with: builds the
# plug-in (exporter and format library) in several ways, exports the samples and a scene made in code with each, with a
# fixed clock and user name, and compares the bytes with those of the first.
#     scripts/same_bytes.sh PRESET...
# The command and its host are those of build/. Preset asan has its own of both, built with the sanitizers like the
# plug-in; preset windows has a host of its own, run under Wine, and exports the scene made in code alone.
set -eu
cd "$(dirname "$0")/.."

presets="$*"
plugin=tv2_export_tool_fixed_clock
for preset in $presets; do
    cmake --preset "$preset" >/dev/null
    rm -rf "build/$preset/exported" build/exported
    mkdir -p "build/$preset/exported" build/exported
    # Every build reads and writes the same paths because files contain them.
    if [ "$preset" = windows ]; then
        cmake --build --preset "$preset" --target $plugin export_rich_scene
        (cd "build/$preset" && timeout 300 ../../scripts/with_wine.sh \
            /usr/lib/wine/wine64 bin/export_rich_scene.exe lib/tv2/$plugin.dll exported)
        continue
    fi
    built="$PWD/build/$preset/lib/tv2/$plugin.so"
    bin="$PWD/build/bin"
    case "$preset" in
    release) built="$PWD/build/lib/tv2/$plugin.so" ;; # its folder is build/ itself
    asan)
        bin="$PWD/build/asan/bin"
        cmake --build --preset "$preset" --target tv2 export_rich_scene
        ;;
    esac
    cmake --build --preset "$preset" --target $plugin
    (cd "build/$preset" && "$bin/export_rich_scene" "$built" exported)
    for scene in samples/*.dae samples/*.glb samples/*.fbx; do
        "$bin/tv2" export --quiet --all-takes --plugin "$built" \
            "$scene" "build/exported/$(basename "$scene" | tr . _).tv2"
    done
    mv build/exported/* "build/$preset/exported"
done

passed=0
failed=0
first="${presets%% *}"
for preset in ${presets#* }; do
    common="*.tv2"
    [ "$preset" != windows ] || common="rich*.tv2"
    for file in "build/$first"/exported/$common; do
        if cmp "$file" "build/$preset/exported/$(basename "$file")"; then
            passed=$((passed + 1))
        else
            failed=$((failed + 1))
        fi
    done
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
