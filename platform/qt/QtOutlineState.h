#pragma once

#include "platform/qt/QtOutlineModel.h"

#include <QTreeView>

#include <string>
#include <utility>
#include <vector>

namespace letterloft {

// What stays of an outline when its rows are announced anew: the open rows, the selected row and the scroll place. A
// row is told by its text, those of the same text under one parent by their order, and by the rows above it.
class QtOutlineState final {
public:
    QtOutlineState(const QTreeView& view, const QtOutlineModel& model);

    // As far as the rows are still there. The model has been reset since this was made.
    void restore(QTreeView& view, const QtOutlineModel& model) const;

private:
    using Key = std::pair<std::string, int>;

    struct OpenRow {
        Key key;
        std::vector<OpenRow> inside;
    };

    static std::vector<Key> keysBelow(const QtOutlineModel& model, const QModelIndex& parent);
    static std::vector<OpenRow> openRowsBelow(const QTreeView& view, const QtOutlineModel& model,
                                              const QModelIndex& parent);
    static std::vector<Key> pathOf(const QtOutlineModel& model, const QModelIndex& row);
    static QModelIndex rowAtPath(const QtOutlineModel& model, const std::vector<Key>& path);
    static void open(QTreeView& view, const QtOutlineModel& model, const QModelIndex& parent,
                     const std::vector<OpenRow>& rows);

    std::vector<OpenRow> openRows_;
    std::vector<Key> selected_;
    std::vector<Key> topmost_;
    int column_ = 0;
    int topmostOffset_ = 0;
    int scrolledDown_ = 0;
    int scrolledRight_ = 0;
};

} // namespace letterloft
