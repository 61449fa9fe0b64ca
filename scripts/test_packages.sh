#!/bin/sh
# Installs the Debian packages in a bare Debian 12, which has neither compiler nor Python, and tries them there.
#     scripts/test_packages.sh PACKAGES WORK
# The bare system is made once and kept in WORK. Needs root or user namespaces.
set -eu
here="$(cd "$(dirname "$0")" && pwd)"
packages="$(cd "$1" && pwd)"
mkdir -p "$2"
work="$(cd "$2" && pwd)"

if [ "${3:-}" != inside ]; then
    if ! mmdebstrap --unshare-helper true; then
        echo "A bare system needs root, or user namespaces and a row of this user in /etc/subuid" >&2
        exit 1
    fi
    if [ ! -e "$work/bare.tar" ]; then
        # From where this machine's own packages come.
        sources=/etc/apt/sources.list.d/debian.sources
        [ -e "$sources" ] || sources=/etc/apt/sources.list
        [ -e "$sources" ] || sources=
        echo "Making a bare Debian 12 (log: $work/bare.log)"
        # shellcheck disable=SC2086 # none or one
        if ! timeout 900 mmdebstrap --variant=apt --include=bash-completion,man-db --dpkgopt=force-unsafe-io \
                --aptopt='Acquire::Retries "3"' bookworm "$work/new.tar" $sources >"$work/bare.log" 2>&1; then
            tail -n 30 "$work/bare.log" >&2
            exit 1
        fi
        mv "$work/new.tar" "$work/bare.tar"
    fi
    # Mounts and processes of the bare system end with this command.
    exec mmdebstrap --unshare-helper "$here/test_packages.sh" "$packages" "$work" inside
fi

root="$work/root"
rm -rf --one-file-system "$root"
mkdir -p "$root" "$work/archives/partial"
tar --extract --directory "$root" --exclude='./dev/*' --file "$work/bare.tar"
mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
mount --bind "$work/archives" "$root/var/cache/apt/archives" # downloaded once
cp /etc/resolv.conf "$root/etc"
mkdir "$root/packages"
cp "$packages"/*.deb "$here/try_packages.sh" "$here/../tests/consumer/CMakeLists.txt" "$root/packages"
chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
    http_proxy="${http_proxy:-}" sh /packages/try_packages.sh
