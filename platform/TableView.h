#pragma once

#include "platform/Cell.h"
#include "platform/TableColumn.h"

#include <cstddef>
#include <optional>

namespace letterloft {

class TableView;

// Where a table's rows come from. Asked anew for everything that is shown; the table keeps nothing.
class TableViewDataSource {
public:
    virtual ~TableViewDataSource() = default;

    virtual std::size_t numberOfRowsInTableView(TableView& table) = 0;

    // `row` counts from 0; the empty text for a row that is no longer there.
    virtual CellValue tableView_objectValueForTableColumn_row(TableView& table, TableColumn* column,
                                                              std::size_t row) = 0;

    // The user has finished editing the row. Called exactly once for each edit that is handed over (Return, Tab,
    // leaving the cell; unchanged too), never for one that is dropped (Escape, a closed window, rows reloaded since).
    virtual void tableView_setObjectValue_forTableColumn_row(TableView& table, const CellValue& value,
                                                             TableColumn* column, std::size_t row) = 0;
};

// A list of rows with a selection of one row or none. Connected by the interface file. Main thread only.
class TableView {
public:
    virtual ~TableView() = default;

    // Fills the view. The data source outlives the view's last question.
    virtual void setDataSource(TableViewDataSource* source) = 0;

    // Asks every question again. The row count is announced here only. The selection follows its row's text and place;
    // if that row is gone, no row is selected.
    virtual void reloadData() = 0;

    virtual std::optional<std::size_t> selectedRow() const = 0;
};

} // namespace letterloft
