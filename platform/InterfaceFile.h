#pragma once

#include "platform/OutlineView.h"
#include "platform/Sender.h"
#include "platform/TableView.h"
#include "platform/Window.h"

#include <map>
#include <memory>
#include <string>

namespace letterloft {

// What was made from an interface file: a window with its views. Owned by the controller that loaded it.
class InterfaceFile {
public:
    virtual ~InterfaceFile() = default;

    virtual Window& window() = 0;

    // The view that the file connects to the outlet of that name; none if it connects none.
    virtual TableView* tableView(const std::string& outlet) = 0;
    virtual OutlineView* outlineView(const std::string& outlet) = 0;
};

// The interface files among the program's own resources. Owned by main; outlives the controllers.
class InterfaceFiles {
public:
    virtual ~InterfaceFiles() = default;

    // Operations by the name that the file's controls give, such as "insertAccount:".
    using Actions = std::map<std::string, Action>;

    // Makes what the file of that name describes, with each control wired to the operation it names. The window is not
    // shown yet. None if there is no such file.
    virtual std::unique_ptr<InterfaceFile> load(const std::string& name, const Actions& actions) = 0;
};

} // namespace letterloft
