#include "platform/qt/QtInterfaceFile.h"

#include "platform/qt/QtText.h"
#include "ui_LLAccountWindow.h"

#include <QAbstractButton>
#include <QAction>

#include <utility>

namespace letterloft {

namespace {

class QtControlSender final : public Sender {
public:
    explicit QtControlSender(const QObject& control) : control_{control} {}

    std::string description() const override {
        return std::string{control_.metaObject()->className()} + " " + fromQt(control_.objectName());
    }

private:
    const QObject& control_;
};

} // namespace

QtInterfaceFile::QtInterfaceFile(std::unique_ptr<QWidget> widget, const InterfaceFiles::Actions& actions,
                                 NotificationCenter& notifications)
    : window_{std::move(widget), notifications} {
    connectViews();
    wireControls(actions);
}

TableView* QtInterfaceFile::tableView(const std::string& outlet) {
    const auto found = tables_.find(outlet);
    return found == tables_.end() ? nullptr : found->second.get();
}

OutlineView* QtInterfaceFile::outlineView(const std::string& outlet) {
    const auto found = outlines_.find(outlet);
    return found == outlines_.end() ? nullptr : found->second.get();
}

void QtInterfaceFile::connectViews() {
    for (auto* const table : window_.widget().findChildren<QTableView*>()) {
        auto& view = tables_[fromQt(table->objectName())];
        view = std::make_unique<QtTableView>(*table);
        window_.beforeClosing([&view = *view] { view.dropEdit(); });
    }
    for (auto* const tree : window_.widget().findChildren<QTreeView*>()) {
        auto* const outline = dynamic_cast<QtOutlineWidget*>(tree);
        if (!outline) continue;
        auto& view = outlines_[fromQt(outline->objectName())];
        view = std::make_unique<QtOutlineView>(*outline);
        window_.beforeClosing([&view = *view] { view.dropEdit(); });
    }
}

void QtInterfaceFile::wireControls(const InterfaceFiles::Actions& actions) {
    const auto wire = [&actions](auto* control, auto used) {
        const auto found = actions.find(fromQt(control->property("operation").toString()));
        if (found == actions.end() || !found->second) return;
        QObject::connect(control, used, control, [control, action = found->second] {
            QtControlSender sender{*control};
            action(&sender);
        });
    };
    for (auto* const button : window_.widget().findChildren<QAbstractButton*>())
        wire(button, &QAbstractButton::clicked);
    for (auto* const key : window_.widget().findChildren<QAction*>())
        wire(key, &QAction::triggered);
}

std::unique_ptr<InterfaceFile> QtInterfaceFiles::load(const std::string& name, const Actions& actions) {
    if (name != "LLAccountWindow") return nullptr;
    auto widget = std::make_unique<QWidget>();
    Ui::LLAccountWindow{}.setupUi(widget.get());
    return std::make_unique<QtInterfaceFile>(std::move(widget), actions, notifications_);
}

} // namespace letterloft
