#include "platform/qt/QtAccessibility.h"

#include "platform/qt/QtAccessibleView.h"
#include "platform/qt/QtOutlineWidget.h"
#include "platform/qt/QtWindow.h"

#include <QAccessibleWidget>

namespace letterloft {

namespace {

// What a window manager's close button does can be done without a window manager's close button.
class Window final : public QAccessibleWidget {
public:
    explicit Window(QWidget& widget) : QAccessibleWidget{&widget, QAccessible::Window} {}

    QStringList actionNames() const override { return {close}; }

    void doAction(const QString& name) override {
        if (name == close && !isBelowSheet(*widget()))
            QMetaObject::invokeMethod(widget(), &QWidget::close, Qt::QueuedConnection);
    }

private:
    static constexpr QLatin1String close{"Close"};
};

// Asked for each class of an object, the most derived one first.
QAccessibleInterface* make(const QString& className, QObject* object) {
    if (auto* const outline = dynamic_cast<QtOutlineWidget*>(object))
        return new QtAccessibleView{*outline, QAccessible::Tree, QAccessible::TreeItem};
    if (className != QLatin1String{object->metaObject()->className()}) return nullptr;
    auto* const widget = qobject_cast<QWidget*>(object);
    if (className == QLatin1String{"QWidget"} && widget->windowType() == Qt::Window) return new Window{*widget};
    if (className == QLatin1String{"QTableView"})
        return new QtAccessibleView{static_cast<QAbstractItemView&>(*widget), QAccessible::Table, QAccessible::Cell};
    if (className == QLatin1String{"QListView"})
        return new QtAccessibleView{static_cast<QAbstractItemView&>(*widget), QAccessible::List, QAccessible::ListItem};
    return nullptr;
}

} // namespace

void QtAccessibility::install() { QAccessible::installFactory(make); }

} // namespace letterloft
