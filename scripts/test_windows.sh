#!/bin/sh
# Tests the Windows build in build/windows: the plug-in's exports and imports, then every test program under Wine.
set -eu
cd "$(dirname "$0")/.."

plugin=build/windows/lib/tv2/tv2_motionbuilder_export_tool.dll
headers=$(x86_64-w64-mingw32-objdump -p $plugin)
expect() # what, expected, actual
{
    if [ "$2" != "$3" ]; then
        printf '%s: %s of the DLL are\n%s\ninstead of\n%s\n' "$plugin" "$1" "$3" "$2" >&2
        exit 1
    fi
}
expect "exports" "LIBRARY_INIT
_Z40EntryPointtev2_motionbuilder_export_tool15kFBDllOperation
python_export_tv2" "$(echo "$headers" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/.*\[ *[0-9]*\] \([A-Za-z_].*\)$/\1/p' | sort)"
expect "imports" "ADVAPI32.dll
KERNEL32.dll
USER32.dll
fbsdk.dll
msvcrt.dll" "$(echo "$headers" | sed -n 's/.*DLL Name: //p' | sort)"
echo "exports and imports of the DLL: as they should be"
if x86_64-w64-mingw32-objdump -p build/windows/lib/tv2/tv2_export_rules.dll |
    sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/.*\[ *[0-9]*\] \([A-Za-z_].*\)$/\1/p' | grep -v '^tv2_rules_'; then
    echo "tv2_export_rules.dll exports more than its functions" >&2
    exit 1
fi

timeout 900 scripts/with_wine.sh ctest --test-dir build/windows --output-on-failure --no-tests=error -j"$(nproc)"
