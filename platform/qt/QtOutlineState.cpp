#include "platform/qt/QtOutlineState.h"

#include <QItemSelectionModel>
#include <QScrollBar>

#include <algorithm>
#include <map>
#include <unordered_map>

namespace letterloft {

QtOutlineState::QtOutlineState(const QTreeView& view, const QtOutlineModel& model)
    : openRows_{openRowsBelow(view, model, {})},
      scrolledDown_{view.verticalScrollBar()->value()},
      scrolledRight_{view.horizontalScrollBar()->value()} {
    const auto selected = view.selectionModel()->selectedRows();
    if (!selected.isEmpty()) {
        selected_ = pathOf(model, selected.first());
        column_ = std::max(0, view.currentIndex().column());
    }
    const QModelIndex topmost = view.indexAt({0, 0}).siblingAtColumn(0);
    topmost_ = pathOf(model, topmost);
    topmostOffset_ = view.visualRect(topmost).top();
}

void QtOutlineState::restore(QTreeView& view, const QtOutlineModel& model) const {
    open(view, model, {}, openRows_);
    const QModelIndex selected = rowAtPath(model, selected_);
    if (selected.isValid())
        view.selectionModel()->setCurrentIndex(selected.siblingAtColumn(column_),
                                               QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    view.doItemsLayout();
    view.horizontalScrollBar()->setValue(scrolledRight_);
    view.verticalScrollBar()->setValue(scrolledDown_);
    const QModelIndex topmost = rowAtPath(model, topmost_);
    if (topmost.isValid())
        view.verticalScrollBar()->setValue(scrolledDown_ + view.visualRect(topmost).top() - topmostOffset_);
}

std::vector<QtOutlineState::Key> QtOutlineState::keysBelow(const QtOutlineModel& model, const QModelIndex& parent) {
    std::vector<Key> keys;
    std::unordered_map<std::string, int> seen;
    for (int place = 0; place < model.rowCount(parent); ++place) {
        const std::string text = model.item(model.index(place, 0, parent)).value_or(std::string{});
        keys.emplace_back(text, seen[text]++);
    }
    return keys;
}

std::vector<QtOutlineState::OpenRow> QtOutlineState::openRowsBelow(const QTreeView& view, const QtOutlineModel& model,
                                                                   const QModelIndex& parent) {
    std::vector<OpenRow> rows;
    std::vector<Key> keys; // most rows have none open below them
    for (int place = 0; place < model.rowCount(parent); ++place) {
        const QModelIndex row = model.index(place, 0, parent);
        if (!view.isExpanded(row)) continue;
        if (keys.empty()) keys = keysBelow(model, parent);
        rows.push_back({keys[static_cast<std::size_t>(place)], openRowsBelow(view, model, row)});
    }
    return rows;
}

std::vector<QtOutlineState::Key> QtOutlineState::pathOf(const QtOutlineModel& model, const QModelIndex& row) {
    if (!row.isValid()) return {};
    auto path = pathOf(model, row.parent());
    path.push_back(keysBelow(model, row.parent()).at(static_cast<std::size_t>(row.row())));
    return path;
}

QModelIndex QtOutlineState::rowAtPath(const QtOutlineModel& model, const std::vector<Key>& path) {
    QModelIndex row;
    for (const Key& key : path) {
        const auto keys = keysBelow(model, row);
        const auto found = std::find(keys.begin(), keys.end(), key);
        if (found == keys.end()) return {};
        row = model.index(static_cast<int>(found - keys.begin()), 0, row);
    }
    return row;
}

void QtOutlineState::open(QTreeView& view, const QtOutlineModel& model, const QModelIndex& parent,
                          const std::vector<OpenRow>& rows) {
    if (rows.empty()) return;
    std::map<Key, int> places;
    for (const Key& key : keysBelow(model, parent))
        places.emplace(key, static_cast<int>(places.size()));
    for (const OpenRow& row : rows) {
        const auto found = places.find(row.key);
        if (found == places.end()) continue;
        const QModelIndex again = model.index(found->second, 0, parent);
        if (!model.hasChildren(again)) continue;
        view.expand(again);
        open(view, model, again, row.inside);
    }
}

} // namespace letterloft
