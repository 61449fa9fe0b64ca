#!/bin/sh
# Tests the Windows build in build/windows: the plug-in's exports and imports, then every test program under Wine.
set -eu
cd "$(dirname "$0")/.."

plugin=build/windows/lib/tv2/tv2_motionbuilder_export_tool.dll
rules=build/windows/lib/tv2/tv2_export_rules.dll
headers() { x86_64-w64-mingw32-objdump -p "$1"; }
exports() {
    headers "$1" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/.*\[ *[0-9]*\] \([A-Za-z_].*\)$/\1/p' | sort
}
imports() { headers "$1" | sed -n 's/.*DLL Name: //p' | sort; }
expect() # what, expected, actual
{
    if [ "$2" != "$3" ]; then
        printf '%s: expected %s\n%s\nfound\n%s\n' "$plugin" "$1" "$2" "$3" >&2
        exit 1
    fi
}
expect "exports" "LIBRARY_INIT
_Z40EntryPointtev2_motionbuilder_export_tool15kFBDllOperation
python_export_tv2
tv2_set_key_reduction" "$(exports $plugin)"
expect "imports" "ADVAPI32.dll
KERNEL32.dll
USER32.dll
fbsdk.dll
msvcrt.dll" "$(imports $plugin)"
if exports $rules | grep -v '^tv2_rules_'; then
    echo "$rules exports more than its own functions" >&2
    exit 1
fi
echo "exports and imports of the DLLs: as expected"

timeout 900 scripts/with_wine.sh ctest --test-dir build/windows --output-on-failure --no-tests=error -j"$(nproc)"
