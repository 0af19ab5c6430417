#pragma once

#include "platform/OutlineView.h"

#include <QAbstractItemModel>
#include <QPersistentModelIndex>
#include <QStringList>

#include <unordered_map>
#include <vector>

namespace letterloft {

// Hands an outline's questions on to its data source and delegate. Keeps which item stands in which row, as far as the
// rows have been asked for, until they are announced anew; an item that is its own child nests only as far as it is
// opened.
class QtOutlineModel final : public QAbstractItemModel {
public:
    // The outline and the columns outlive the last question; one title for each column.
    QtOutlineModel(OutlineView& outline, std::vector<TableColumn*> columns, QStringList titles);

    void setDataSource(OutlineViewDataSource* source) { source_ = source; }
    void setDelegate(OutlineViewDelegate* delegate) { delegate_ = delegate; }

    // Forgets all rows, so that they are asked for anew.
    void announceRows();

    // The row that the keyboard is at. Only there can a text be edited, so only there is the delegate asked whether it
    // can: Qt asks for the flags of all rows at each layout.
    void setCurrentRow(const QModelIndex& row) { currentRow_ = row; }

    OutlineItem item(const QModelIndex& index) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    // Numbers are never used twice, so an index that Qt still holds from before an announcement finds no row, where a
    // pointer would dangle.
    using Number = quintptr;
    static constexpr Number root = 0;

    struct Row {
        Number parent = root;
        int place = 0;
        OutlineItem item;
        bool counted = false;
        std::vector<Number> children; // root: not asked for yet
    };

    Row* rowAt(const QModelIndex& index) const;
    Row& counted(Row& row) const;
    Number child(Number parent, int place) const;
    std::optional<Cell> cell(const QModelIndex& index) const;
    CellValue value(const QModelIndex& index) const;
    TableColumn* column(const QModelIndex& index) const;
    QVariant description(const QModelIndex& index) const;
    QVariant shownText(const QModelIndex& index) const;

    OutlineView& outline_;
    std::vector<TableColumn*> columns_;
    QStringList titles_;
    OutlineViewDataSource* source_ = nullptr;
    OutlineViewDelegate* delegate_ = nullptr;
    QPersistentModelIndex currentRow_;
    mutable std::unordered_map<Number, Row> rows_; // Qt asks const questions, and rows are made when asked for
    mutable Number lastNumber_ = root;
};

} // namespace letterloft
