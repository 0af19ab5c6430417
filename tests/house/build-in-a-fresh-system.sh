#!/bin/sh
# Builds the program, takes the guided tour of it and installs it, in a system that has nothing but its base and what
# script/run installs there. Needs root. build-in-a-fresh-system.sh <root of the sources>
set -eu
. "$(dirname "$0")/fresh-system.sh"
mkdir "$root/system/letterloft"
git -C "$1" ls-files -z >"$root/files"
quietly tar -C "$1" -c --null -T "$root/files" -f "$root/files.tar"
tar -x -f "$root/files.tar" -C "$root/system/letterloft"

inside mount -t proc proc /proc
quietly inside sh -c 'cd /letterloft && script/run && cmake --install build/release'
# It comes as far as to look for a display, and says so.
said=$(inside letterloft 2>&1) && fail "it starts without a display"
echo "$said" | grep -q 'There is no display that Letterloft can use' || fail "it said: $said"
