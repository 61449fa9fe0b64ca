#!/bin/sh
# Builds the packages again, elsewhere and for another user, and compares them with the first.
#     scripts/compare_packages.sh PACKAGES WORK
set -eu
packages="$(cd "$1" && pwd)"
mkdir -p "$2"
work="$(cd "$2" && pwd)"
cd "$(dirname "$0")/.."

# Another folder, home, user, time zone, locale and umask than those of the first; time has passed, too.
again()
{
    env -i PATH="$PATH" HOME="$work/home" USER=somebody LOGNAME=somebody TZ=Asia/Kathmandu LC_ALL=C \
        CCACHE_DISABLE=1 sh -c 'umask 027; exec "$@"' sh "$@"
}
mkdir -p "$work/home"
rm -rf "$work/out"
again scripts/package_debian.sh "$work/out" "$work/elsewhere" >/dev/null
again cmake --preset windows -B "$work/windows" >/dev/null
again cmake --build "$work/windows" --target tv2 tv2_motionbuilder_export_tool tv2_export_rules_module mobu_host \
    >"$work/windows.log"
again scripts/package_windows.py "$work/windows" "$work/out" >/dev/null

compared=0
for file in "$packages"/*.deb "$packages"/*.zip; do
    cmp "$file" "$work/out/$(basename "$file")"
    compared=$((compared + 1))
done
[ "$compared" -eq 6 ]
echo "$compared packages, the same bytes from both builds"
