#pragma once

#include "platform/OutlineView.h"
#include "tests/fakes/FakeTableColumn.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace letterloft {

// An outline without a screen, with the columns "Column 1" and "Column 2". A row is known by its path: the texts from
// the top down to its own.
class FakeOutlineView : public OutlineView {
public:
    using Path = std::vector<std::string>;

    void setDataSource(OutlineViewDataSource* source) override {
        dataSource_ = source;
        reloadData();
    }
    void setDelegate(OutlineViewDelegate* delegate) override { delegate_ = delegate; }

    void reloadData() override {
        ++reloads;
        rebuild();
    }

    std::optional<std::size_t> selectedRow() const override {
        const auto found = std::find(rows.begin(), rows.end(), selected_);
        return found == rows.end() ? std::nullopt : std::optional{static_cast<std::size_t>(found - rows.begin())};
    }

    OutlineItem itemAtRow(std::size_t row) const override {
        return row < rows.size() ? OutlineItem{rows[row].back()} : std::nullopt;
    }

    OutlineItem parentForItem(const OutlineItem& item) const override {
        if (selectedRow() && item == selected_.back()) return parentOf(selected_);
        for (const Path& row : rows)
            if (item == row.back()) return parentOf(row);
        return std::nullopt;
    }

    bool isItemExpanded(const OutlineItem& item) const override {
        return std::any_of(rows.begin(), rows.end(),
                           [&](const Path& row) { return item == row.back() && open_.count(row) != 0; });
    }

    std::vector<TableColumn*> tableColumns() const override { return {&first, &second}; }

    TableColumn* tableColumnWithIdentifier(const std::string& identifier) const override {
        for (TableColumn* column : tableColumns())
            if (column->identifier() == identifier) return column;
        return nullptr;
    }

    void select(std::size_t row) { selected_ = rows.at(row); }

    // As the user does; false if the row can't be opened or closed, or the delegate refuses.
    bool expand(std::size_t row) {
        const Path path = rows.at(row);
        if (open_.count(path) != 0 || !dataSource_->outlineView_isItemExpandable(*this, path.back())) return false;
        if (!delegate_->outlineView_shouldExpandItem(*this, path.back())) return false;
        open_.insert(path);
        rebuild();
        return true;
    }

    bool collapse(std::size_t row) {
        const Path path = rows.at(row);
        if (open_.count(path) == 0 || !delegate_->outlineView_shouldCollapseItem(*this, path.back())) return false;
        open_.erase(path);
        rebuild();
        return true;
    }

    // What the row's cell in that column is, and holds.
    std::optional<Cell> cellAt(std::size_t row, TableColumn& column) {
        return delegate_->outlineView_dataCellForTableColumn_item(*this, &column, rows.at(row).back());
    }
    CellValue valueAt(std::size_t row, TableColumn& column) {
        return dataSource_->outlineView_objectValueForTableColumn_byItem(*this, &column, rows.at(row).back());
    }

    // Hands a new value over, as far as the row's cell can be edited; says whether it did.
    bool edit(std::size_t row, TableColumn& column, const CellValue& value) {
        const std::optional<Cell> cell = cellAt(row, column);
        if (!cell || !cell->editable) return false;
        dataSource_->outlineView_setObjectValue_forTableColumn_byItem(*this, value, &column, rows.at(row).back());
        return true;
    }

    mutable FakeTableColumn first{"Column 1", 175};
    mutable FakeTableColumn second{"Column 2", 60};
    std::vector<Path> rows; // as they are shown
    int reloads = 0;

private:
    static OutlineItem parentOf(const Path& row) {
        return row.size() < 2 ? std::nullopt : OutlineItem{row[row.size() - 2]};
    }

    void rebuild() {
        assert(dataSource_);
        rows.clear();
        appendChildren({}, std::nullopt);
        if (!selectedRow()) selected_.clear();
    }

    void appendChildren(const Path& above, const OutlineItem& item) {
        const std::size_t count = dataSource_->outlineView_numberOfChildrenOfItem(*this, item);
        for (std::size_t index = 0; index < count; ++index) {
            Path row = above;
            row.push_back(dataSource_->outlineView_child_ofItem(*this, index, item).value());
            rows.push_back(row);
            if (open_.count(row) != 0) appendChildren(row, row.back());
        }
    }

    OutlineViewDataSource* dataSource_ = nullptr;
    OutlineViewDelegate* delegate_ = nullptr;
    std::set<Path> open_;
    Path selected_;
};

} // namespace letterloft
