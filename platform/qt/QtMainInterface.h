#pragma once

#include "platform/Sender.h"
#include "platform/qt/QtMenu.h"

#include <map>
#include <string>

namespace letterloft {

// The main interface file: the fixed items of the status menu.
class QtMainInterface final {
public:
    // Operations by the name that the file's items give, such as "manageAccounts:".
    using Actions = std::map<std::string, Action>;

    // Adds the file's items to the menu, each wired to the operation it names.
    static void load(QtMenu& menu, const Actions& actions);
};

} // namespace letterloft
