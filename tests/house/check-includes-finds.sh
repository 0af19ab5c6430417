#!/bin/sh
# Plants one forbidden include after another in an otherwise empty tree: each has to be found.
set -eu
check=$(cd "$(dirname "$0")" && pwd)/../../script/check-includes
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
cd "$tree"
mkdir -p app menu manager storage platform/qt platform/linux

while read -r file include; do
    echo "#include $include" >"$file"
    if "$check" "$tree" >/dev/null; then
        echo "not found: $include in $file"
        exit 1
    fi
    rm "$file"
done <<'END'
app/Delegate.cpp <QString>
menu/Menu.h <QtCore>
manager/Accounts.cpp <glib.h>
storage/Keys.cpp <plist/plist.h>
storage/Keys.h "platform/linux/PosixFileManager.h"
platform/Menu.h <QMenu>
platform/Menu.h "menu/LLMenuLet.h"
platform/qt/QtThing.cpp "manager/LLAccountController.h"
platform/linux/Thing.cpp "menu/LLMenuLet.h"
END
