#!/bin/sh
# Shows the export dialog on a display of its own, with settings of its own, and takes its picture: docs/popup.png.
set -eu
cd "$(dirname "$0")/.."
build=${1:-build}

scratch=$(mktemp -d)
display=
dialog=
# shellcheck disable=SC2329 # the trap calls it
clean_up()
{
    [ -z "$dialog" ] || kill "$dialog" 2>/dev/null || true
    [ -z "$display" ] || kill "$display" 2>/dev/null || true
    rm -rf "$scratch"
}
trap clean_up EXIT

Xvfb -displayfd 3 -screen 0 800x800x24 3>"$scratch/number" >/dev/null 2>&1 &
display=$!
tries=0
until [ -s "$scratch/number" ]; do
    tries=$((tries + 1))
    [ "$tries" -lt 100 ] || { echo "Xvfb does not start" >&2; exit 1; }
    sleep 0.1
done
DISPLAY=:$(cat "$scratch/number")
export DISPLAY

XDG_CONFIG_HOME="$scratch" "$build/bin/tv2" export --dialog samples/robot_14_takes.glb "$scratch/robot.tv2" \
    2>/dev/null >&2 &
dialog=$!
# The window is at 100, 100 on a black screen; a first picture of one colour means that it is not drawn yet.
tries=0
until import -window root -crop 282x612+100+100 +repage "$scratch/popup.png" &&
    [ "$(identify -format %k "$scratch/popup.png")" -gt 8 ]; do
    tries=$((tries + 1))
    [ "$tries" -lt 100 ] || { echo "the dialog does not show" >&2; exit 1; }
    sleep 0.1
done
convert "$scratch/popup.png" -strip -colors 32 "PNG8:docs/popup.png"
identify docs/popup.png
