#pragma once

#include "platform/qt/QtMenu.h"

#include <QMenu>

namespace letterloft {

// A QtMenu as a QMenu, drawn by Qt or, once it is a status item's context menu, by a panel at the other end of the bus.
// Only rows that have become different are made anew: each change is a message to the panel, and a panel may keep the
// old picture of a row that only lost it.
class QtMenuView final {
public:
    explicit QtMenuView(QtMenu& menu);

    QMenu& widget() { return widget_; }

    // Shows the menu as it stands now; a view turned empty shows none of it.
    void update();
    void setEmpty(bool empty);

    // Follows the menu's changes by itself from now on.
    void follow();

private:
    class Row;
    using Items = std::deque<std::shared_ptr<QtMenuItem>>;

    bool isDrawnByBus() { return widget_.platformMenu() != nullptr; }
    void showTitlesForDrawer();
    void replaceRows(const Items& items, qsizetype top, qsizetype bottom);
    Row* makeRow(const std::shared_ptr<QtMenuItem>& item);
    QString shownTitle(const QtMenuItem& item);

    QtMenu& menu_;
    QMenu widget_;
    bool empty_ = false;
    bool titlesAreForBus_ = false;
};

} // namespace letterloft
