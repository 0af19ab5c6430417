#pragma once

#include "platform/TableView.h"
#include "tests/fakes/FakeTableColumn.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <string>
#include <vector>

namespace letterloft {

// A table without a screen, with one column.
class FakeTableView : public TableView {
public:
    void setDataSource(TableViewDataSource* source) override {
        dataSource_ = source;
        reloadData();
    }

    void reloadData() override {
        assert(dataSource_);
        ++reloads;
        edited_.reset();
        rowCount_ = dataSource_->numberOfRowsInTableView(*this);
        if (selected_) selected_ = rowOf(selectedText_, *selected_);
    }

    std::optional<std::size_t> selectedRow() const override { return selected_; }

    void select(std::size_t row) {
        selectedText_ = texts().at(row);
        selected_ = row;
    }

    // What the rows show; empty for nothing. Asked of the data source each time.
    std::vector<std::string> texts() {
        std::vector<std::string> all;
        for (std::size_t row = 0; row < rowCount_; ++row) {
            const CellValue value = dataSource_->tableView_objectValueForTableColumn_row(*this, &column_, row);
            const auto* text = std::get_if<std::string>(&value);
            all.push_back(text ? *text : "");
        }
        return all;
    }

    // Opens the cell for editing. `commit` hands it over and says so, unless it has been dropped meanwhile.
    void beginEditing(std::size_t row) {
        assert(row < rowCount_);
        edited_ = row;
    }

    bool commit(const CellValue& value) {
        if (!edited_) return false;
        const std::size_t row = *edited_;
        edited_.reset();
        dataSource_->tableView_setObjectValue_forTableColumn_row(*this, value, &column_, row);
        return true;
    }

    void cancelEditing() { edited_.reset(); }

    int reloads = 0;

private:
    // The row with that text: the one at `place` if it still has it, else the first; none if it is gone.
    std::optional<std::size_t> rowOf(const std::string& text, std::size_t place) {
        const std::vector<std::string> all = texts();
        if (place < all.size() && all[place] == text) return place;
        const auto found = std::find(all.begin(), all.end(), text);
        return found == all.end() ? std::nullopt : std::optional{static_cast<std::size_t>(found - all.begin())};
    }

    FakeTableColumn column_{"Accounts", 200};
    std::size_t rowCount_ = 0; // as announced by the latest reload
    TableViewDataSource* dataSource_ = nullptr;
    std::optional<std::size_t> selected_;
    std::string selectedText_;
    std::optional<std::size_t> edited_;
};

} // namespace letterloft
