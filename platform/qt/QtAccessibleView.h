#pragma once

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QHash>
#include <QPersistentModelIndex>

class QLineEdit;

namespace letterloft {

// What assistive technology is told of a view's cells, and what it can do to them. All that Qt offers for a cell is to
// select it (6.4); here a row of a menu is chosen, a name edited, a box ticked and a row opened as well.
// Made by QtAccessibility; owned by Qt's cache of such objects.
class QtAccessibleView final : public QAccessibleWidget {
public:
    QtAccessibleView(QAbstractItemView& view, QAccessible::Role role, QAccessible::Role cellRole);

    int childCount() const override;
    QAccessibleInterface* child(int place) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* focusChild() const override;

private:
    ~QtAccessibleView() override;

    int columns() const;
    int cellCount() const;
    QList<QLineEdit*> editors() const;
    QModelIndex cellAt(int row, int column) const;
    template <typename Visitor>
    void forEachRow(const Visitor& visit) const;
    QAccessibleInterface* cell(const QModelIndex& index) const;
    QAccessibleInterface* header(int place, int column) const;
    void forgetFormerCells() const;

    QAbstractItemView& view_;
    const QAccessible::Role cellRole_;
    const int headerRows_;    // Qt counts headers as children wherever it tells of a cell, so they are counted here
    const int headerColumns_; // a table's, even when it is not shown
    mutable QHash<QPersistentModelIndex, QAccessible::Id> cells_;
    mutable QHash<int, QAccessible::Id> headers_;
};

} // namespace letterloft
