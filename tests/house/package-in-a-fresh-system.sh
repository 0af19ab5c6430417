#!/bin/sh
# Installs the package that script/package has left in a folder into a system that has nothing but its base, upgrades it
# there, and removes it again. Needs root. package-in-a-fresh-system.sh <folder of the package>
set -eu
package=$(ls "$1"/letterloft_*.deb) || { echo "script/package has not been run"; exit 1; }
. "$(dirname "$0")/fresh-system.sh"

# The same package under a later version.
dpkg-deb -R "$package" "$root/later"
sed -i 's/^Version: .*/&+later/' "$root/later/DEBIAN/control"
quietly dpkg-deb --root-owner-group -b "$root/later" "$root/system/later.deb"
cp "$package" "$root/system/first.deb"

inside useradd -m anna
data="/home/anna/Library/Application Support/Letterloft/Work"
inside mkdir -p "$data"
for version in first later; do
    install_inside "/$version.deb"
    inside dpkg -V letterloft
    # Nothing that it is linked to is missing: it comes as far as to look for a display, and says so.
    said=$(inside setpriv --reuid anna --regid anna --clear-groups env HOME=/home/anna letterloft 2>&1) &&
        fail "it starts without a display"
    echo "$said" | grep -q 'There is no display that Letterloft can use' || fail "it said: $said"
done
inside dpkg -s letterloft | grep -q '^Version: .*+later$' || fail "it has not been upgraded"

quietly inside apt-get purge -q -y letterloft
inside test -d "$data" || fail "the user's files have gone"
left=$(cd "$root/system" && find . -xdev -iname '*letterloft*' ! -path './home/*' ! -path './var/log/*')
[ -z "$left" ] || fail "this is left: $left"
