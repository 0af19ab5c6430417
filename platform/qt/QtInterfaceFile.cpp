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
    const auto actionFor = [&actions](const QObject& control) {
        const auto found = actions.find(fromQt(control.property("operation").toString()));
        return found == actions.end() ? Action{} : found->second;
    };
    for (auto* const button : window_.widget().findChildren<QAbstractButton*>())
        if (const Action action = actionFor(*button))
            QObject::connect(button, &QAbstractButton::clicked, button, [button, action] {
                QtControlSender sender{*button};
                action(&sender);
            });
    for (auto* const key : window_.widget().findChildren<QAction*>())
        if (const Action action = actionFor(*key))
            QObject::connect(key, &QAction::triggered, key, [key, action] {
                QtControlSender sender{*key};
                action(&sender);
            });
}

std::unique_ptr<InterfaceFile> QtInterfaceFiles::load(const std::string& name, const Actions& actions) {
    if (name != "LLAccountWindow") return nullptr;
    auto widget = std::make_unique<QWidget>();
    Ui::LLAccountWindow{}.setupUi(widget.get());
    return std::make_unique<QtInterfaceFile>(std::move(widget), actions, notifications_);
}

} // namespace letterloft
