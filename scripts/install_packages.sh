#!/bin/sh
# Installs the Debian packages that building and testing need, and those named as arguments, unless they are installed;
# prints which.
set -eu

packages="g++ cmake ninja-build pkg-config libpugixml-dev zlib1g-dev libcli11-dev nlohmann-json3-dev libgtest-dev
          libfltk1.3-dev libjs-three python3 python3-dev pybind11-dev python3-numpy $*"

missing=""
for package in $packages; do
    if ! dpkg-query --show --showformat '${db:Status-Status}' "$package" 2>/dev/null | grep -q '^installed$'; then
        missing="$missing $package"
    fi
done
[ -n "$missing" ] || exit 0

echo "Installing missing packages:$missing"
as_root=""
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "Not root and no sudo: install them by hand with: apt-get install$missing" >&2
        exit 1
    fi
    as_root=sudo
fi
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update --quiet=2
# shellcheck disable=SC2086 # a list of words
$as_root apt-get install --quiet=2 --yes --no-install-recommends $missing >/dev/null
