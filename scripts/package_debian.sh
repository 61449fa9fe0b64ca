#!/bin/sh
# Builds the Debian packages into a folder, without root, from a copy of the tree, which stays as it is.
#     scripts/package_debian.sh OUTPUT WORK
# WORK is emptied, and has the copy and what is built of it. The same tree gives the same bytes in any folder, at any
# time, for any user.
set -eu
cd "$(dirname "$0")/.."
output="$1"
work="$2"

# The packages have the version of the project.
project="$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)"
changelog="$(dpkg-parsechangelog --show-field Version)"
if [ "$project" != "$changelog" ]; then
    echo "CMakeLists.txt has version $project, debian/changelog has $changelog" >&2
    exit 1
fi

rm -rf "$work"
mkdir -p "$work/tv2" "$output"
# Everything but what is built: a tree with changes is packaged with them, and it need not be one of Git's.
sed 's,^/,./,; s,/$,,' .gitignore |
    tar --create --exclude-vcs --exclude=__pycache__ --anchored --exclude-from=- . | tar --extract -C "$work/tv2"
(
    cd "$work/tv2"
    umask 022
    if ! dpkg-buildpackage --build=binary --no-sign --jobs="$(nproc)" >../build.log 2>&1; then
        tail -n 60 ../build.log >&2
        exit 1
    fi
)
rm -f "$output"/*.deb "$output"/*.changes "$output"/*.buildinfo
cp "$work"/*.deb "$work"/*.changes "$work"/*.buildinfo "$output"
ls "$output"/*.deb
