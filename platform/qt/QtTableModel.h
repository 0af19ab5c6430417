#pragma once

#include "platform/TableView.h"

#include <QAbstractTableModel>
#include <QStringList>

#include <vector>

namespace letterloft {

// Hands a table's questions on to its data source; keeps nothing but the number of rows announced last.
class QtTableModel final : public QAbstractTableModel {
public:
    // The table and the columns outlive the last question; one title for each column.
    QtTableModel(TableView& table, std::vector<TableColumn*> columns, QStringList titles);

    void setDataSource(TableViewDataSource* source) { source_ = source; }

    // Asks for the number of rows and drops what the view holds about the old ones.
    void announceRows();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    TableView& table_;
    std::vector<TableColumn*> columns_;
    QStringList titles_;
    TableViewDataSource* source_ = nullptr;
    int rows_ = 0;
};

} // namespace letterloft
