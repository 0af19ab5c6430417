#pragma once

#include "platform/InterfaceFile.h"
#include "platform/qt/QtOutlineView.h"
#include "platform/qt/QtTableView.h"
#include "platform/qt/QtWindow.h"

#include <map>
#include <memory>
#include <string>

namespace letterloft {

// A window made from an interface file. Outlets are connected by the object names of its tables and outlines; each
// button or action sends the operation that its property "operation" names.
class QtInterfaceFile final : public InterfaceFile {
public:
    QtInterfaceFile(std::unique_ptr<QWidget> widget, const InterfaceFiles::Actions& actions,
                    NotificationCenter& notifications);

    Window& window() override { return window_; }
    TableView* tableView(const std::string& outlet) override;
    OutlineView* outlineView(const std::string& outlet) override;

private:
    void connectViews();
    void wireControls(const InterfaceFiles::Actions& actions);

    QtWindow window_;
    std::map<std::string, std::unique_ptr<QtTableView>> tables_;
    std::map<std::string, std::unique_ptr<QtOutlineView>> outlines_;
};

// The interface files, which uic made into code.
class QtInterfaceFiles final : public InterfaceFiles {
public:
    // The windows tell the notification centre of their closing.
    explicit QtInterfaceFiles(NotificationCenter& notifications) : notifications_{notifications} {}

    std::unique_ptr<InterfaceFile> load(const std::string& name, const Actions& actions) override;

private:
    NotificationCenter& notifications_;
};

} // namespace letterloft
