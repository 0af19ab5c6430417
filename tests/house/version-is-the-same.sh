#!/bin/sh
# The version in CMakeLists.txt, and whatever else names the newest one. version-is-the-same.sh <root of the sources>
set -eu
cd "$1"
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -n "$version" ] || { echo "no version in CMakeLists.txt"; exit 1; }
says() {
    found=$(sed -n "s/$2/\\1/p" "$1" | head -n 1)
    [ "$found" = "$version" ] || { echo "$1 says '$found', not '$version'"; exit 1; }
}
says CHANGELOG.md '^## \([0-9.]*\),.*'
says debian/changelog '^letterloft (\([0-9.]*\)).*'
says packaging/letterloft.1 '^\.TH .*"Letterloft \([0-9.]*\)".*'
says packaging/org.letterloft.Letterloft.metainfo.xml '.*<release version="\([0-9.]*\)".*'
