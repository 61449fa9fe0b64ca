#!/bin/sh
# Tries the zip for Windows: its command under Wine, which must export what that of Linux exports, and the sources in
# it, which MinGW-w64 builds against the headers of the headless SDK in place of MotionBuilder's.
#     scripts/test_windows_package.sh PACKAGES WORK
# Needs the builds in build/ and build/windows.
set -eu
cd "$(dirname "$0")/.."
tree="$PWD"
rm -rf "$2"
mkdir -p "$2"
work="$(cd "$2" && pwd)"

fail()
{
    echo "$*" >&2
    exit 1
}

python3 -m zipfile --extract "$1"/tv2-*-windows.zip "$work"
package="$(echo "$work"/tv2-*-windows)"
[ "$(head -n 1 "$package/README.txt" | tr -d '\r')" = "This archive holds no plug-in that MotionBuilder can load." ] ||
    fail "README.txt does not say first that there is no plug-in for MotionBuilder"

contents() { build/bin/tv2 hash "$1" | cut -c1-64; } # of all bytes but the texts with path, user and time
windows() { timeout 120 scripts/with_wine.sh /usr/lib/wine/wine64 "$package/bin/tv2.exe" "$@"; }
build/bin/tv2 export --quiet --all-takes samples/robot_14_takes.glb "$work/linux.tv2"
windows export --quiet --all-takes "Z:$package/samples/robot_14_takes.glb" "Z:$package/windows.tv2"
takes=0
for file in "$work"/linux_*.tv2; do
    other="$package/windows_${file#*linux_}"
    [ "$(contents "$file")" = "$(contents "$other")" ] || fail "$other holds something else than $file"
    takes=$((takes + 1))
done
[ $takes -eq 14 ] || fail "$takes takes were exported, not 14"
echo "tv2.exe under Wine: 14 takes, the same as on Linux"

# A MotionBuilder of our own: the headless SDK where Autodesk's would be.
# -O1: without optimisation MinGW-w64 takes minutes to link.
sdk="$work/MotionBuilder/OpenRealitySDK"
mkdir -p "$sdk/lib/x64"
cp -r host/include "$sdk"
cp build/windows/lib/libfbsdk.dll.a "$sdk/lib/x64/fbsdk.lib"
(
    cd "$package/motionbuilder"
    cmake --preset motionbuilder -G Ninja --toolchain "$tree/cmake/mingw_w64.cmake" -DCMAKE_BUILD_TYPE=None \
        -DCMAKE_CXX_FLAGS=-O1 -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0 \
        -DMOTIONBUILDER_ROOT="$work/MotionBuilder" >/dev/null
    cmake --build --preset motionbuilder >"$work/build.log" || fail "$(tail -n 40 "$work/build.log")"
    cmake --install build/motionbuilder --component exporter --prefix "$work/MotionBuilder" >/dev/null
)
installed="$work/MotionBuilder/bin/x64/plugins"
for file in tv2_export.py tv2_export_rules.dll; do
    [ -e "$installed/$file" ] || fail "$installed/$file is not installed"
done
windows export --quiet --take Dance --plugin "Z:$installed/tv2_motionbuilder_export_tool.dll" \
    "Z:$package/samples/robot_14_takes.glb" "Z:$package/built.tv2"
[ "$(contents "$package/built.tv2")" = "$(contents "$work/linux_Dance.tv2")" ] ||
    fail "the plug-in built from the sources in the zip exports something else"
echo "the sources in the zip: MinGW-w64 builds a plug-in of them, which exports the same"
