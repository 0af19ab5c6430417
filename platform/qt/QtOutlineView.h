#pragma once

#include "platform/OutlineView.h"
#include "platform/qt/QtCellDelegate.h"
#include "platform/qt/QtOutlineModel.h"
#include "platform/qt/QtOutlineWidget.h"
#include "platform/qt/QtTableColumn.h"

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace letterloft {

// An outline made by an interface file. The file names its columns in the properties "columnIdentifiers",
// "columnTitles" and "columnWidths" (in points) of the widget, which outlives this.
class QtOutlineView final : public OutlineView {
public:
    explicit QtOutlineView(QtOutlineWidget& widget);
    ~QtOutlineView() override;

    void setDataSource(OutlineViewDataSource* source) override;
    void setDelegate(OutlineViewDelegate* delegate) override;
    void reloadData() override;
    std::optional<std::size_t> selectedRow() const override;
    OutlineItem itemAtRow(std::size_t row) const override;
    OutlineItem parentForItem(const OutlineItem& item) const override;
    bool isItemExpanded(const OutlineItem& item) const override;
    std::vector<TableColumn*> tableColumns() const override;
    TableColumn* tableColumnWithIdentifier(const std::string& identifier) const override;

    // Takes an open editor away without handing its text over.
    void dropEdit() { cells_->dropEdit(); }

private:
    // False to stop.
    using Visitor = std::function<bool(const QModelIndex& row)>;

    void makeColumns();
    void watchRows();
    void countOpen(const QModelIndex& row, int change);
    QModelIndex selected() const;
    bool visitShown(const QModelIndex& parent, const Visitor& visitor) const;

    QtOutlineWidget& widget_;
    std::vector<std::unique_ptr<QtTableColumn>> columns_;
    std::unique_ptr<QtOutlineModel> model_;
    QtCellDelegate* cells_;
    OutlineViewDelegate* delegate_ = nullptr;
    std::unordered_map<std::string, int> openRows_; // how many rows with that text are open
};

} // namespace letterloft
