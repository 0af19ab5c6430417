#pragma once

#include "platform/Cell.h"
#include "platform/TableColumn.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace letterloft {

class OutlineView;

// An item of the outline is a text; no item is the outline's invisible root.
using OutlineItem = std::optional<std::string>;

// Where an outline's rows come from. Asked anew for everything that is shown, children only when they are needed.
class OutlineViewDataSource {
public:
    virtual ~OutlineViewDataSource() = default;

    virtual std::size_t outlineView_numberOfChildrenOfItem(OutlineView& outline, const OutlineItem& item) = 0;
    virtual OutlineItem outlineView_child_ofItem(OutlineView& outline, std::size_t index, const OutlineItem& item) = 0;
    virtual bool outlineView_isItemExpandable(OutlineView& outline, const OutlineItem& item) = 0;
    virtual CellValue outlineView_objectValueForTableColumn_byItem(OutlineView& outline, TableColumn* column,
                                                                   const OutlineItem& item) = 0;
    virtual void outlineView_setObjectValue_forTableColumn_byItem(OutlineView& outline, const CellValue& value,
                                                                  TableColumn* column, const OutlineItem& item) = 0;
};

// What decides how an outline's rows look and open.
class OutlineViewDelegate {
public:
    virtual ~OutlineViewDelegate() = default;

    // The cell for the row, or none for the view's default. No column stands for a row of full width.
    virtual std::optional<Cell> outlineView_dataCellForTableColumn_item(OutlineView& outline, TableColumn* column,
                                                                        const OutlineItem& item) = 0;

    // Asked before the user, or assistive technology, opens or closes a row; not for rows that the view opens again by
    // itself after reloadData.
    virtual bool outlineView_shouldExpandItem(OutlineView& outline, const OutlineItem& item) = 0;
    virtual bool outlineView_shouldCollapseItem(OutlineView& outline, const OutlineItem& item) = 0;
};

// A list of rows that open into more rows, with a selection of one row or none. Connected by the interface file.
// Main thread only.
class OutlineView {
public:
    virtual ~OutlineView() = default;

    // The data source fills the view. Both outlive the view's last question.
    virtual void setDataSource(OutlineViewDataSource* source) = 0;
    virtual void setDelegate(OutlineViewDelegate* delegate) = 0;

    // Asks every question again. Which rows are open, the selection and the scroll place stay as far as their rows do.
    virtual void reloadData() = 0;

    // Rows count from 0 over everything that is shown.
    virtual std::optional<std::size_t> selectedRow() const = 0;
    virtual OutlineItem itemAtRow(std::size_t row) const = 0;

    // The item above `item`, none for one at the top. Where the same text stands in several rows: the selected row's if
    // that is one of them, else the first shown.
    virtual OutlineItem parentForItem(const OutlineItem& item) const = 0;

    // Whether any row with that text is open.
    virtual bool isItemExpanded(const OutlineItem& item) const = 0;

    // In display order; the view owns them.
    virtual std::vector<TableColumn*> tableColumns() const = 0;

    // None if no column has that identifier.
    virtual TableColumn* tableColumnWithIdentifier(const std::string& identifier) const = 0;
};

} // namespace letterloft
