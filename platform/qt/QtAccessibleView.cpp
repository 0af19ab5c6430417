#include "platform/qt/QtAccessibleView.h"

#include "platform/qt/QtAccessibleCell.h"

#include <QLineEdit>
#include <QListView>
#include <QTableView>
#include <QTreeView>

namespace letterloft {

QtAccessibleView::QtAccessibleView(QAbstractItemView& view, QAccessible::Role role, QAccessible::Role cellRole)
    : QAccessibleWidget{&view, role},
      view_{view},
      cellRole_{cellRole},
      headerRows_{qobject_cast<QListView*>(&view) ? 0 : 1},
      headerColumns_{qobject_cast<QTableView*>(&view) ? 1 : 0} {}

QtAccessibleView::~QtAccessibleView() {
    for (const QAccessible::Id id : cells_)
        QAccessible::deleteAccessibleInterface(id);
    for (const QAccessible::Id id : headers_)
        QAccessible::deleteAccessibleInterface(id);
}

int QtAccessibleView::columns() const { return view_.model() ? view_.model()->columnCount() : 0; }

// The cells, and behind them what is put over a cell to edit it.
int QtAccessibleView::childCount() const { return cellCount() + static_cast<int>(editors().size()); }

int QtAccessibleView::cellCount() const {
    if (!view_.model()) return 0;
    int rows = headerRows_;
    forEachRow([&rows](const QModelIndex&) { return ++rows > 0; });
    return rows * (columns() + headerColumns_);
}

QList<QLineEdit*> QtAccessibleView::editors() const {
    return view_.viewport()->findChildren<QLineEdit*>(QString{}, Qt::FindDirectChildrenOnly);
}

QAccessibleInterface* QtAccessibleView::child(int place) const {
    const int width = columns() + headerColumns_;
    if (place < 0 || width == 0 || !view_.model()) return nullptr;
    if (const int behind = place - cellCount(); behind >= 0)
        return QAccessible::queryAccessibleInterface(editors().value(behind));
    const int row = place / width - headerRows_;
    const int column = place % width - headerColumns_;
    return row < 0 || column < 0 ? header(place, row < 0 ? column : -1) : cell(cellAt(row, column));
}

QAccessibleInterface* QtAccessibleView::childAt(int x, int y) const {
    return cell(view_.indexAt(view_.viewport()->mapFromGlobal(QPoint{x, y})));
}

QAccessibleInterface* QtAccessibleView::focusChild() const {
    return view_.hasFocus() ? cell(view_.currentIndex()) : nullptr;
}

int QtAccessibleView::indexOfChild(const QAccessibleInterface* child) const {
    const auto* const one = dynamic_cast<const QtAccessibleCell*>(child);
    if (!one && child && child->object())
        if (const auto place = editors().indexOf(child->object()); place >= 0)
            return cellCount() + static_cast<int>(place);
    if (!one || !one->isValid()) return -1;
    if (!one->cell().isValid()) return headers_.key(QAccessible::uniqueId(const_cast<QtAccessibleCell*>(one)), -1);
    const QModelIndex wanted = one->cell();
    const QModelIndex first = wanted.siblingAtColumn(0);
    int row = 0;
    bool isShown = false; // what is in a closed branch is not
    forEachRow([&](const QModelIndex& shown) {
        isShown = shown == first;
        return !isShown && ++row > 0;
    });
    if (!isShown) return -1;
    return (row + headerRows_) * (columns() + headerColumns_) + wanted.column() + headerColumns_;
}

// From top to bottom, as long as `visit` answers true. Only a tree has rows within rows.
template <typename Visitor>
void QtAccessibleView::forEachRow(const Visitor& visit) const {
    const auto* const tree = qobject_cast<const QTreeView*>(&view_);
    int row = 0;
    QModelIndex shown = view_.model()->index(row, 0);
    while (shown.isValid() && visit(shown))
        shown = tree ? tree->indexBelow(shown).siblingAtColumn(0) : shown.siblingAtRow(++row);
}

QModelIndex QtAccessibleView::cellAt(int row, int column) const {
    QModelIndex found;
    forEachRow([&](const QModelIndex& shown) {
        if (row == 0) found = shown.siblingAtColumn(column);
        return row-- > 0;
    });
    return found;
}

QAccessibleInterface* QtAccessibleView::cell(const QModelIndex& index) const {
    if (!index.isValid()) return nullptr;
    const QPersistentModelIndex key{index};
    if (const auto known = cells_.constFind(key); known != cells_.cend())
        return QAccessible::accessibleInterface(*known);
    forgetFormerCells();
    auto* const made = new QtAccessibleCell{view_, cellRole_, index, index.column()};
    cells_.insert(key, QAccessible::registerAccessibleInterface(made));
    return made;
}

QAccessibleInterface* QtAccessibleView::header(int place, int column) const {
    if (const auto known = headers_.constFind(place); known != headers_.cend())
        return QAccessible::accessibleInterface(*known);
    auto* const made = new QtAccessibleCell{view_, QAccessible::ColumnHeader, {}, column};
    headers_.insert(place, QAccessible::registerAccessibleInterface(made));
    return made;
}

void QtAccessibleView::forgetFormerCells() const {
    for (auto known = cells_.begin(); known != cells_.end();)
        if (known.key().isValid()) {
            ++known;
        } else {
            QAccessible::deleteAccessibleInterface(*known);
            known = cells_.erase(known);
        }
}

} // namespace letterloft
