#include "platform/qt/QtMenuView.h"

#include "platform/qt/QtImage.h"
#include "platform/qt/QtMenuTitle.h"

#include <QAction>

#include <algorithm>
#include <utility>

namespace letterloft {

// Every action in the widget is one of these.
class QtMenuView::Row final : public QAction {
public:
    Row(std::shared_ptr<QtMenuItem> item, QObject* parent)
        : QAction{parent}, item_{std::move(item)}, image_{item_->image()} {}

    const std::shared_ptr<QtMenuItem>& item() const { return item_; }

    // Stands for `item` from now on, if that looks the same.
    bool adopt(const std::shared_ptr<QtMenuItem>& item) {
        const bool same = item->title() == item_->title() && item->isSeparatorItem() == isSeparator() &&
                          item->image() == image_ && static_cast<bool>(item->action()) == isEnabled();
        if (same) item_ = item;
        return same;
    }

private:
    std::shared_ptr<QtMenuItem> item_;
    std::shared_ptr<const Image> image_;
};

QtMenuView::QtMenuView(QtMenu& menu) : menu_{menu} {
    widget_.setSeparatorsCollapsible(false); // one at the top is part of the menu
    QObject::connect(&widget_, &QMenu::triggered, &menu_,
                     [this](QAction* action) { menu_.choose(static_cast<Row*>(action)->item()); });
}

void QtMenuView::follow() {
    QObject::connect(&menu_, &QtMenu::changed, &widget_, [this] { update(); });
}

void QtMenuView::setEmpty(bool empty) {
    empty_ = empty;
    update();
}

void QtMenuView::update() {
    const Items none;
    const Items& items = empty_ ? none : menu_.items();
    showTitlesForDrawer();
    const QList<QAction*> rows = widget_.actions();
    const auto count = static_cast<qsizetype>(items.size());
    const qsizetype shorter = std::min(count, rows.size());
    const auto fits = [&](qsizetype row, qsizetype item) {
        return static_cast<Row*>(rows[row])->adopt(items[static_cast<std::size_t>(item)]);
    };
    qsizetype top = 0;
    while (top < shorter && fits(top, top))
        ++top;
    qsizetype bottom = 0;
    while (bottom < shorter - top && fits(rows.size() - 1 - bottom, count - 1 - bottom))
        ++bottom;
    replaceRows(items, top, bottom);
}

// What stands between the first `top` and the last `bottom` rows becomes what stands there among the items.
void QtMenuView::replaceRows(const Items& items, qsizetype top, qsizetype bottom) {
    const QList<QAction*> rows = widget_.actions();
    const auto end = static_cast<qsizetype>(items.size()) - bottom;
    const bool isAsLong = rows.size() == static_cast<qsizetype>(items.size());
    for (qsizetype index = top; index < end; ++index) {
        const auto& item = items[static_cast<std::size_t>(index)];
        // After a switch two rows differ, perhaps far apart; those between them stay.
        if (isAsLong && static_cast<Row*>(rows[index])->adopt(item)) continue;
        QAction* const below = isAsLong ? rows[index] : bottom > 0 ? rows[rows.size() - bottom] : nullptr;
        widget_.insertAction(below, makeRow(item));
        if (isAsLong) delete below;
    }
    if (isAsLong) return;
    for (qsizetype index = top; index < rows.size() - bottom; ++index)
        delete rows[index];
}

void QtMenuView::showTitlesForDrawer() {
    if (std::exchange(titlesAreForBus_, isDrawnByBus()) == titlesAreForBus_) return;
    for (QAction* const row : widget_.actions())
        row->setText(shownTitle(*static_cast<Row*>(row)->item()));
}

QtMenuView::Row* QtMenuView::makeRow(const std::shared_ptr<QtMenuItem>& item) {
    auto* const row = new Row{item, &widget_};
    row->setSeparator(item->isSeparatorItem());
    row->setText(shownTitle(*item));
    row->setIcon(QtImage::iconOf(item->image()));
    row->setIconVisibleInMenu(true);
    row->setMenuRole(QAction::NoRole);
    row->setEnabled(static_cast<bool>(item->action()));
    return row;
}

QString QtMenuView::shownTitle(const QtMenuItem& item) {
    return isDrawnByBus() ? titleForBusMenu(item.title()) : titleForQtMenu(item.title());
}

} // namespace letterloft
