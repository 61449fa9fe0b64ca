#!/bin/sh
# Runs a command under Wine's wings: a prefix of its own in build/windows, a screen that nobody sees, and an end of all
# of Wine's processes afterwards. The command itself starts Windows programs with /usr/lib/wine/wine64.
#     scripts/with_wine.sh ctest --test-dir build/windows
set -eu
folder="$(cd "$(dirname "$0")/.." && pwd)/build/windows/wine"
mkdir -p "$folder"

export WINEPREFIX="$folder/prefix"
export WINEARCH=win64
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe=" # no .NET, no browser; what crashes ends at once
export LC_ALL=C.UTF-8                     # names of files are UTF-8, the 8-bit code page is 1252
export TZ=IST-05:30                       # a local time that is not universal time

wine=/usr/lib/wine/wine64
server=/usr/lib/wine/wineserver64
if [ ! -e "$folder/ready" ]; then
    rm -rf "$WINEPREFIX"
    echo "Setting up Wine in $folder"
    timeout 180 xvfb-run --auto-servernum sh -c "$wine wineboot --init; $server --wait" >"$folder/wineboot.log" 2>&1
    touch "$folder/ready"
fi
# What is left of Wine ends before its screen does.
xvfb-run --auto-servernum sh -c "\"\$@\"; status=\$?; timeout 30 $server --kill || true; exit \$status" sh "$@"
