#!/bin/sh
# What cmake --install leaves in an empty folder: each file in the place where a desktop looks for it, and the program
# where the files that start it say. install-is-whole.sh <build folder>
set -eu
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
DESTDIR=$root cmake --install "$1" --prefix /opt/there >"$root.log" || { cat "$root.log"; rm "$root.log"; exit 1; }
rm "$root.log"
cd "$root/opt/there"

find . -type f | sort >"$root/found"
diff - "$root/found" <<'FILES'
./bin/letterloft
./share/applications/org.letterloft.Letterloft.desktop
./share/dbus-1/services/org.letterloft.Letterloft.service
./share/doc/letterloft/LICENSE
./share/icons/hicolor/scalable/apps/org.letterloft.Letterloft.svg
./share/icons/hicolor/symbolic/apps/org.letterloft.Letterloft-symbolic.svg
./share/man/man1/letterloft.1
./share/metainfo/org.letterloft.Letterloft.metainfo.xml
FILES
exec=$(sed -n 's/^Exec=//p' share/dbus-1/services/org.letterloft.Letterloft.service)
[ -x "$root$exec" ] || { echo "the bus would start $exec, which is not there"; exit 1; }
[ -x "bin/$(sed -n 's/^Exec=//p' share/applications/org.letterloft.Letterloft.desktop)" ] ||
    { echo "the desktop entry starts a program that is not there"; exit 1; }
