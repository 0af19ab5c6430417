#include "platform/qt/QtKeySelection.h"

#include <QKeyEvent>

namespace letterloft {

QtKeySelection::QtKeySelection(QAbstractItemView& view) : QObject{&view}, view_{view} { view.installEventFilter(this); }

bool QtKeySelection::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &view_ || event->type() != QEvent::KeyPress) return false;
    return selectCurrentRow(static_cast<QKeyEvent*>(event)->key());
}

// True if that is all the key does. Home and End go on from there.
bool QtKeySelection::selectCurrentRow(int key) {
    const bool steps = key == Qt::Key_Down || key == Qt::Key_Up;
    if (!steps && key != Qt::Key_Home && key != Qt::Key_End) return false;
    QItemSelectionModel* const selection = view_.selectionModel();
    if (!selection || selection->hasSelection() || !selection->currentIndex().isValid()) return false;
    selection->select(selection->currentIndex(), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    return steps;
}

} // namespace letterloft
