#pragma once

#include "platform/TableView.h"
#include "platform/qt/QtCellDelegate.h"
#include "platform/qt/QtTableColumn.h"
#include "platform/qt/QtTableModel.h"

#include <QTableView>

#include <memory>
#include <vector>

namespace letterloft {

// A table made by an interface file. The file names its columns in the properties "columnIdentifiers" and
// "columnTitles" of the widget, which outlives this.
class QtTableView final : public TableView {
public:
    explicit QtTableView(QTableView& widget);
    ~QtTableView() override;

    void setDataSource(TableViewDataSource* source) override;
    void reloadData() override;
    std::optional<std::size_t> selectedRow() const override;

    // Takes an open editor away without handing its text over.
    void dropEdit() { delegate_->dropEdit(); }

private:
    QString textOfRow(int row) const;
    int placeAfterReload(int oldRow) const;
    void select(int row);
    void rememberSelection();

    QTableView& widget_;
    std::vector<std::unique_ptr<QtTableColumn>> columns_;
    std::unique_ptr<QtTableModel> model_;
    QtCellDelegate* delegate_;
    QString selectedText_;
};

} // namespace letterloft
