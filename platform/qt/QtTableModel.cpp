#include "platform/qt/QtTableModel.h"

#include "platform/qt/QtText.h"

#include <utility>

namespace letterloft {

QtTableModel::QtTableModel(TableView& table, std::vector<TableColumn*> columns, QStringList titles)
    : table_{table}, columns_{std::move(columns)}, titles_{std::move(titles)} {}

void QtTableModel::announceRows() {
    beginResetModel();
    rows_ = source_ ? static_cast<int>(source_->numberOfRowsInTableView(table_)) : 0;
    endResetModel();
}

int QtTableModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int QtTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

Qt::ItemFlags QtTableModel::flags(const QModelIndex& index) const {
    return index.isValid() ? QAbstractTableModel::flags(index) | Qt::ItemIsEditable : Qt::NoItemFlags;
}

QVariant QtTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole) return QVariant{Qt::AlignLeft | Qt::AlignVCenter};
    return role == Qt::DisplayRole ? titles_.value(section) : QVariant{};
}

QVariant QtTableModel::data(const QModelIndex& index, int role) const {
    if (!source_ || !checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    if (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::ToolTipRole) return {};
    const CellValue value = source_->tableView_objectValueForTableColumn_row(
        table_, columns_[static_cast<std::size_t>(index.column())], static_cast<std::size_t>(index.row()));
    const auto* const text = std::get_if<std::string>(&value);
    if (!text) return {};
    return role == Qt::ToolTipRole ? plainToolTip(toQt(*text)) : toQt(*text);
}

bool QtTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!source_ || role != Qt::EditRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) return false;
    source_->tableView_setObjectValue_forTableColumn_row(table_, fromQt(value.toString()),
                                                         columns_[static_cast<std::size_t>(index.column())],
                                                         static_cast<std::size_t>(index.row()));
    // The source may have announced fewer rows meanwhile.
    if (index.row() < rows_) Q_EMIT dataChanged(index, index);
    return true;
}

} // namespace letterloft
