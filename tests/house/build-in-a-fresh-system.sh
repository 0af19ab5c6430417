#!/bin/sh
# Builds and installs the program in a system that has nothing but its base and what script/bootstrap
# installs there. Needs root. build-in-a-fresh-system.sh <root of the sources>
set -eu
. "$(dirname "$0")/fresh-system.sh"
mkdir "$root/system/letterloft"
git -C "$1" ls-files -z >"$root/files"
quietly tar -C "$1" -c --null -T "$root/files" -f "$root/files.tar"
tar -x -f "$root/files.tar" -C "$root/system/letterloft"

for step in 'script/bootstrap build' 'cmake --preset release' 'cmake --build --preset release' \
    'cmake --install build/release'; do
    quietly inside sh -c "cd /letterloft && $step"
done
# It comes as far as to look for a display, and says so.
said=$(inside env HOME=/root letterloft 2>&1) && fail "it starts without a display"
echo "$said" | grep -q 'There is no display that Letterloft can use' || fail "it said: $said"
