#pragma once

#include <QAbstractItemView>

namespace letterloft {

// Lets the keys that move in a view, or open or edit a row, select a row first when none is selected. By itself Qt 6.4
// makes the first row current without selecting it when the view gets the focus, and then takes a key that leads there
// for no move at all. While a cell is edited, no key reaches the view.
class QtKeySelection final : public QObject {
public:
    // Owned by the view, which selects whole rows, one at most.
    explicit QtKeySelection(QAbstractItemView& view);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isEdited() const;
    bool goToEndOfTable(int key);
    bool selectCurrentRow(int key);

    QAbstractItemView& view_;
};

} // namespace letterloft
