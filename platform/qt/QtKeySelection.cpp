#include "platform/qt/QtKeySelection.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTableView>

namespace letterloft {

QtKeySelection::QtKeySelection(QAbstractItemView& view) : QObject{&view}, view_{view} { view.installEventFilter(this); }

bool QtKeySelection::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &view_ || event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    return isEdited() || goToEndOfTable(key) || selectCurrentRow(key);
}

// A key that an open editor has no use for comes on to the view, where it would leave the cell.
bool QtKeySelection::isEdited() const {
    const QWidget* const focus = QApplication::focusWidget();
    return focus && focus != &view_ && view_.isAncestorOf(focus);
}

// By itself a table takes Home and End for the ends of a row.
bool QtKeySelection::goToEndOfTable(int key) {
    const bool isForEnds = key == Qt::Key_Home || key == Qt::Key_End;
    const QAbstractItemModel* const model = view_.model();
    if (!isForEnds || !model || model->rowCount() == 0 || !qobject_cast<QTableView*>(&view_)) return false;
    const int row = key == Qt::Key_Home ? 0 : model->rowCount() - 1;
    view_.selectionModel()->setCurrentIndex(model->index(row, 0),
                                            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    return true;
}

// True if that is all the key does. The others go on from there.
bool QtKeySelection::selectCurrentRow(int key) {
    switch (key) {
    case Qt::Key_Down:
    case Qt::Key_Up:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_F2:
        break;
    default:
        return false;
    }
    QItemSelectionModel* const selection = view_.selectionModel();
    if (!selection || selection->hasSelection() || !selection->currentIndex().isValid()) return false;
    selection->select(selection->currentIndex(), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    return key == Qt::Key_Down || key == Qt::Key_Up;
}

} // namespace letterloft
