#pragma once

#include "platform/TableView.h"
#include "tests/fakes/FakeTableColumn.h"

#include <cassert>
#include <optional>
#include <string>
#include <vector>

namespace letterloft {

// A table without a screen, with one column.
class FakeTableView final : public TableView {
public:
    void setDataSource(TableViewDataSource* source) override {
        dataSource_ = source;
        reloadData();
    }

    void reloadData() override {
        assert(dataSource_);
        ++reloads;
        edited_.reset();
        rowCount = dataSource_->numberOfRowsInTableView(*this);
        if (selected_) selected_ = rowOf(selectedText_, *selected_);
    }

    std::optional<std::size_t> selectedRow() const override { return selected_; }

    void select(std::optional<std::size_t> row) {
        assert(!row || *row < rowCount);
        selected_ = row;
        if (row) selectedText_ = textAt(*row);
    }

    // What the row shows; empty for nothing. Asked of the data source each time.
    std::string textAt(std::size_t row) {
        const CellValue value = dataSource_->tableView_objectValueForTableColumn_row(*this, &column, row);
        const auto* text = std::get_if<std::string>(&value);
        return text ? *text : std::string{};
    }

    std::vector<std::string> texts() {
        std::vector<std::string> all;
        for (std::size_t row = 0; row < rowCount; ++row)
            all.push_back(textAt(row));
        return all;
    }

    // Opens the cell for editing; `commit` hands it over, unless it has been dropped meanwhile, and says whether it
    // did.
    void beginEditing(std::size_t row) {
        assert(row < rowCount);
        edited_ = row;
    }

    bool commit(const CellValue& value) {
        if (!edited_) return false;
        const std::size_t row = *edited_;
        edited_.reset();
        dataSource_->tableView_setObjectValue_forTableColumn_row(*this, value, &column, row);
        return true;
    }

    void cancelEditing() { edited_.reset(); }

    FakeTableColumn column{"Accounts", 200};
    std::size_t rowCount = 0; // as announced by the latest reload
    int reloads = 0;

private:
    // The row with that text: the one at `place` if it still has it, else the first; none if it is gone.
    std::optional<std::size_t> rowOf(const std::string& text, std::size_t place) {
        if (place < rowCount && textAt(place) == text) return place;
        for (std::size_t row = 0; row < rowCount; ++row) {
            if (textAt(row) == text) return row;
        }
        return std::nullopt;
    }

    TableViewDataSource* dataSource_ = nullptr;
    std::optional<std::size_t> selected_;
    std::string selectedText_;
    std::optional<std::size_t> edited_;
};

} // namespace letterloft
