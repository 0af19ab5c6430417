#include "platform/qt/QtOutlineWidget.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

namespace letterloft {

QtOutlineWidget::QtOutlineWidget(QWidget* parent) : QTreeView{parent} {
    setItemsExpandable(false);
    setExpandsOnDoubleClick(false);
}

void QtOutlineWidget::setQuestions(Question shouldExpand, Question shouldCollapse) {
    shouldExpand_ = std::move(shouldExpand);
    shouldCollapse_ = std::move(shouldCollapse);
}

void QtOutlineWidget::openByUser(const QModelIndex& row) {
    if (isExpanded(row) || !model()->hasChildren(row)) return;
    const QPersistentModelIndex kept{row};
    if (shouldExpand_ && !shouldExpand_(row)) return;
    expand(kept);
}

void QtOutlineWidget::closeByUser(const QModelIndex& row) {
    if (!isExpanded(row)) return;
    const QPersistentModelIndex kept{row};
    if (shouldCollapse_ && !shouldCollapse_(row)) return;
    if (!kept.isValid()) return;
    leaveRowsInside(kept);
    closeWithin(kept);
}

void QtOutlineWidget::keyPressEvent(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool bare = modifiers == Qt::NoModifier || modifiers == Qt::ShiftModifier;
    if (state() == EditingState || !currentIndex().isValid() || !bare || !handleKey(event->key()))
        QTreeView::keyPressEvent(event);
}

bool QtOutlineWidget::handleKey(int key) {
    const QModelIndex row = currentIndex().siblingAtColumn(0);
    const bool leftToRight = layoutDirection() == Qt::LeftToRight;
    switch (key) {
    case Qt::Key_Right:
        leftToRight ? stepInto(row) : stepOut(row);
        return true;
    case Qt::Key_Left:
        leftToRight ? stepOut(row) : stepInto(row);
        return true;
    case Qt::Key_Plus:
        openByUser(row);
        return true;
    case Qt::Key_Minus:
        closeByUser(row);
        return true;
    case Qt::Key_Asterisk: // would open all rows, those that nest for ever too
        return true;
    case Qt::Key_Space:
        tickRow(row);
        return true;
    default:
        return false;
    }
}

void QtOutlineWidget::stepInto(const QModelIndex& row) {
    if (!isExpanded(row)) return openByUser(row);
    const QModelIndex first = model()->index(0, 0, row);
    if (first.isValid()) setCurrentIndex(first);
}

void QtOutlineWidget::stepOut(const QModelIndex& row) {
    if (isExpanded(row)) return closeByUser(row);
    if (row.parent().isValid()) setCurrentIndex(row.parent());
}

void QtOutlineWidget::tickRow(const QModelIndex& row) {
    if (!selectionModel()->isRowSelected(row.row(), row.parent())) return;
    for (int column = 0; column < model()->columnCount(); ++column) {
        const QModelIndex cell = row.siblingAtColumn(column);
        if (!(cell.flags() & Qt::ItemIsUserCheckable)) continue;
        const bool ticked = cell.data(Qt::CheckStateRole).toInt() == Qt::Checked;
        model()->setData(cell, ticked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
        return;
    }
}

void QtOutlineWidget::mousePressEvent(QMouseEvent* event) {
    const QModelIndex row = rowWithTriangleAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && row.isValid()) return toggle(row);
    QTreeView::mousePressEvent(event);
}

void QtOutlineWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    const QModelIndex triangle = rowWithTriangleAt(point);
    if (event->button() == Qt::LeftButton && triangle.isValid()) return toggle(triangle);
    const QPersistentModelIndex pointed{indexAt(point)};
    QTreeView::mouseDoubleClickEvent(event);
    const bool plain = pointed.isValid() && !(pointed.flags() & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable));
    if (event->button() == Qt::LeftButton && plain && pointed.column() == 0) toggle(pointed);
}

void QtOutlineWidget::toggle(const QModelIndex& row) { isExpanded(row) ? closeByUser(row) : openByUser(row); }

void QtOutlineWidget::closeWithin(const QModelIndex& row) {
    for (int place = 0; place < model()->rowCount(row); ++place) {
        const QModelIndex inside = model()->index(place, 0, row);
        if (isExpanded(inside)) closeWithin(inside);
    }
    collapse(row);
}

void QtOutlineWidget::leaveRowsInside(const QModelIndex& row) {
    for (QModelIndex above = currentIndex().parent(); above.isValid(); above = above.parent())
        if (above == row) {
            selectionModel()->setCurrentIndex(row, QItemSelectionModel::Clear);
            return;
        }
}

QModelIndex QtOutlineWidget::rowWithTriangleAt(const QPoint& point) const {
    const QModelIndex row = indexAt(point).siblingAtColumn(0);
    if (!row.isValid() || !model()->hasChildren(row)) return {};
    const QRect cell = visualRect(row);
    const bool leftToRight = layoutDirection() == Qt::LeftToRight;
    const int left = leftToRight ? cell.left() - indentation() : cell.right() + 1;
    return point.x() >= left && point.x() < left + indentation() ? row : QModelIndex{};
}

} // namespace letterloft
