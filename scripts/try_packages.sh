#!/bin/sh
# Tries the packages in /packages in the bare system that this runs in: see test_packages.sh.
set -eu

fail()
{
    echo "$*" >&2
    exit 1
}
install_packages()
{
    apt-get install --quiet=2 --yes --no-install-recommends -o Dpkg::Options::=--force-unsafe-io \
        -o Dpkg::Use-Pty=0 -o Acquire::Retries=3 -o APT::Keep-Downloaded-Packages=true "$@" >/tmp/apt.log 2>&1 ||
        fail "$(tail -n 40 /tmp/apt.log)"
}
files() # but what apt, dpkg and their tools write for themselves
{
    find / -xdev \( -path /proc -o -path /dev -o -path /packages -o -path /tmp -o -path /var/log -o -path /var/cache \
        -o -path /var/lib/apt -o -path /var/lib/dpkg -o -path /var/lib/systemd -o -path /etc/ld.so.cache \) \
        -prune -o -print |
        sort
}

for tool in gcc g++ c++ cc make python3; do
    if command -v "$tool" >/dev/null; then
        fail "the bare system is not bare: it has $tool"
    fi
done
dpkg-query --show --showformat '${Package}\n' >/tmp/packages_before
files >/tmp/files_before

apt-get update --quiet=2
# shellcheck disable=SC2046 # words
install_packages $(find /packages -name '*.deb' ! -name 'libtev2-dev_*')
if command -v cc >/dev/null; then
    fail "the packages brought a compiler"
fi
echo "installed: $(dpkg-query --show --showformat '${Package} ' 'tv2*' python3-tev2 'libtev2*')"

# As a user with a folder of their own, outside any tree.
folder=/tmp/user
mkdir $folder
chown nobody $folder
cd $folder
user() { setpriv --reuid=nobody --regid=nogroup --clear-groups env HOME=$folder "$@"; }

installed="$(dpkg-query --show --showformat '${Version}' tv2)"
[ "$(user tv2 --version)" = "tv2 $installed" ] || fail "tv2 --version is not that of the package, $installed"
sample=/usr/share/doc/tv2/examples/robot_14_takes.glb
user tv2 export --quiet $sample dance.tv2
user tv2 check dance.tv2 | grep -q 'dance.tv2: clean' || fail "dance.tv2 is not clean"
user tv2 view --no-open dance.tv2 -o dance.html >/dev/null
echo "tv2: exports a sample, the file is clean, a page of it is written"

user /usr/bin/python3 - $sample <<'PYTHON'
import sys
import numpy
import tev2
import tv2_export

scene = tev2.load("dance.tv2")
clip = tev2.Clip(scene)
poses = clip.sample(numpy.linspace(0.0, 1.0, 5))
assert poses.shape == (5, len(scene.nodes), 4, 4), poses.shape
assert numpy.isfinite(poses).all() and (poses[0] != poses[2]).any()

tv2_export.open_scene(sys.argv[1])
assert len(tv2_export.export("dance_python.tv2")) == 1
PYTHON
[ "$(user tv2 hash dance.tv2 | cut -d' ' -f1-2)" = "$(user tv2 hash dance_python.tv2 | cut -d' ' -f1-2)" ] ||
    fail "tv2_export.py exports something else than tv2"
echo "Python: tev2 loads and samples, tv2_export exports the same"

pages=0
for page in /usr/share/man/man*/tv2*; do
    user man --warnings "$page" >/tmp/page 2>/tmp/warnings
    if [ -s /tmp/warnings ] || ! grep -q '^NAME' /tmp/page; then
        fail "$page: $(head /tmp/page /tmp/warnings)"
    fi
    pages=$((pages + 1))
done
user man tv2-export | grep -q -- --all-takes || fail "man tv2-export does not have --all-takes"
echo "man: $pages pages, formatted without warnings"

cat >/tmp/complete.bash <<'BASH'
source /usr/share/bash-completion/bash_completion
_completion_loader tv2
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
COMP_LINE="$*"
COMP_POINT=${#COMP_LINE}
$(complete -p tv2 | sed 's/.*-F \([^ ]*\).*/\1/') tv2 "${@: -1}" "${@: -2:1}"
echo "${COMPREPLY[*]}"
BASH
completed() { bash /tmp/complete.bash "$@" | sed 's/ *$//'; }
[ "$(completed tv2 expo)" = export ] || fail "tv2 expo is completed to '$(completed tv2 expo)'"
[ "$(completed tv2 export --all-t)" = --all-takes ] || fail "--all-t is completed to '$(completed tv2 export --all-t)'"
echo "bash: completes verbs and options"

# For programs: what the package itself needs, then a compiler.
install_packages /packages/libtev2-dev_*.deb g++ gcc cmake make pkg-config
examples=/usr/share/doc/libtev2-dev/examples
# shellcheck disable=SC2046 # words
user g++ $examples/play.cpp -o play $(pkg-config --cflags --libs tev2_playback) -pthread
# shellcheck disable=SC2046
user gcc $examples/play.c -o play_c $(pkg-config --cflags --libs tev2_playback_c)
user cmake -S /packages -B consumer -DSOURCE=$examples/play.cpp -DLIBRARY=tev2::playback >/dev/null
user cmake --build consumer >/dev/null
for program in ./play ./consumer/consumer; do
    user $program dance.tv2 10 5 1 | grep -q '^checksum ' || fail "$program does not play dance.tv2"
done
user ./play_c dance.tv2 | grep -q "^75 nodes" || fail "./play_c does not play dance.tv2"
echo "libtev2-dev: programs build by way of pkg-config and CMake, and run"

# shellcheck disable=SC2046 # words
apt-get purge --quiet=2 --yes --auto-remove $(dpkg-query --show --showformat '${Package}\n' | sort |
    comm -13 /tmp/packages_before -) >/tmp/apt.log 2>&1 || fail "$(cat /tmp/apt.log)"
files >/tmp/files_after
diff /tmp/files_before /tmp/files_after || fail "left after purging the packages (>) or gone with them (<)"
echo "purged: nothing is left"
