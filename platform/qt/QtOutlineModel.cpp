#include "platform/qt/QtOutlineModel.h"

#include "platform/qt/QtText.h"

#include <utility>

namespace letterloft {

QtOutlineModel::QtOutlineModel(OutlineView& outline, std::vector<TableColumn*> columns, QStringList titles)
    : outline_{outline}, columns_{std::move(columns)}, titles_{std::move(titles)} {
    rows_.emplace(root, Row{});
}

void QtOutlineModel::announceRows() {
    beginResetModel();
    rows_.clear();
    rows_.emplace(root, Row{});
    endResetModel();
}

OutlineItem QtOutlineModel::item(const QModelIndex& index) const {
    const Row* const row = index.isValid() ? rowAt(index) : nullptr;
    return row ? row->item : OutlineItem{};
}

QModelIndex QtOutlineModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column < 0 || column >= columnCount() || row >= rowCount(parent)) return {};
    return createIndex(row, column, child(parent.isValid() ? parent.internalId() : root, row));
}

QModelIndex QtOutlineModel::parent(const QModelIndex& child) const {
    const Row* const row = child.isValid() ? rowAt(child) : nullptr;
    if (!row || row->parent == root) return {};
    return createIndex(rows_.at(row->parent).place, 0, row->parent);
}

int QtOutlineModel::rowCount(const QModelIndex& parent) const {
    if (!source_ || parent.column() > 0) return 0;
    Row* const row = rowAt(parent);
    return row ? static_cast<int>(counted(*row).children.size()) : 0;
}

int QtOutlineModel::columnCount(const QModelIndex&) const { return static_cast<int>(columns_.size()); }

bool QtOutlineModel::hasChildren(const QModelIndex& parent) const {
    if (!source_ || parent.column() > 0) return false;
    const Row* const row = rowAt(parent);
    if (!row) return false;
    return parent.isValid() ? source_->outlineView_isItemExpandable(outline_, row->item) : rowCount() > 0;
}

Qt::ItemFlags QtOutlineModel::flags(const QModelIndex& index) const {
    if (!rowAt(index) || !index.isValid()) return Qt::NoItemFlags;
    const auto shown = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == 0 && index != currentRow_) return shown;
    const auto cellShown = cell(index);
    if (!cellShown || !cellShown->editable) return shown;
    return shown | (cellShown->kind == Cell::Kind::checkBox ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

QVariant QtOutlineModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole) return QVariant{Qt::AlignLeft | Qt::AlignVCenter};
    return role == Qt::DisplayRole ? titles_.value(section) : QVariant{};
}

QVariant QtOutlineModel::data(const QModelIndex& index, int role) const {
    if (!source_ || !index.isValid() || !rowAt(index)) return {};
    if (role == Qt::DisplayRole || role == Qt::EditRole) return shownText(index);
    if (role == Qt::ToolTipRole) return plainToolTip(shownText(index).toString());
    if (role == Qt::AccessibleDescriptionRole) return description(index);
    if (role != Qt::CheckStateRole && role != Qt::AccessibleTextRole) return {};
    const auto cellShown = cell(index);
    if (!cellShown || cellShown->kind != Cell::Kind::checkBox) return {};
    if (role == Qt::AccessibleTextRole) return titles_.value(index.column());
    const CellValue shown = value(index);
    const bool* const ticked = std::get_if<bool>(&shown);
    return ticked && *ticked ? Qt::Checked : Qt::Unchecked;
}

// The arrow keys go from row to row, and whoever can't see a row's box is told of it; and of a box whose it is.
QVariant QtOutlineModel::description(const QModelIndex& index) const {
    if (index.column() > 0)
        return data(index, Qt::CheckStateRole).isNull() ? QVariant{} : shownText(index.siblingAtColumn(0));
    for (int column = 1; column < columnCount(); ++column) {
        const QVariant tick = data(index.siblingAtColumn(column), Qt::CheckStateRole);
        if (!tick.isNull())
            return titles_.value(column) + QLatin1String{tick.toInt() == Qt::Checked ? ": checked" : ": not checked"};
    }
    return {};
}

bool QtOutlineModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!source_ || !index.isValid() || (role != Qt::CheckStateRole && role != Qt::EditRole)) return false;
    const Row* const row = rowAt(index);
    if (!row) return false;
    const OutlineItem changed = row->item;
    const CellValue given =
        role == Qt::CheckStateRole ? CellValue{value.toInt() == Qt::Checked} : CellValue{fromQt(value.toString())};
    source_->outlineView_setObjectValue_forTableColumn_byItem(outline_, given, column(index), changed);
    if (rowAt(index)) Q_EMIT dataChanged(index, index);
    return true;
}

QtOutlineModel::Row* QtOutlineModel::rowAt(const QModelIndex& index) const {
    const auto found = rows_.find(index.isValid() ? index.internalId() : root);
    return found == rows_.end() ? nullptr : &found->second;
}

QtOutlineModel::Row& QtOutlineModel::counted(Row& row) const {
    if (!row.counted) {
        row.children.assign(source_->outlineView_numberOfChildrenOfItem(outline_, row.item), root);
        row.counted = true;
    }
    return row;
}

QtOutlineModel::Number QtOutlineModel::child(Number parent, int place) const {
    Row& above = rows_.at(parent);
    Number& number = above.children.at(static_cast<std::size_t>(place));
    if (number == root) {
        number = ++lastNumber_;
        rows_.emplace(number, Row{.parent = parent,
                                  .place = place,
                                  .item = source_->outlineView_child_ofItem(outline_, static_cast<std::size_t>(place),
                                                                            above.item),
                                  .counted = false,
                                  .children = {}});
    }
    return number;
}

std::optional<Cell> QtOutlineModel::cell(const QModelIndex& index) const {
    return delegate_ ? delegate_->outlineView_dataCellForTableColumn_item(outline_, column(index), item(index))
                     : std::nullopt;
}

CellValue QtOutlineModel::value(const QModelIndex& index) const {
    return source_->outlineView_objectValueForTableColumn_byItem(outline_, column(index), item(index));
}

TableColumn* QtOutlineModel::column(const QModelIndex& index) const {
    return columns_.at(static_cast<std::size_t>(index.column()));
}

// A tick has no text; a check box shows its title, unless it is to be the box alone.
QVariant QtOutlineModel::shownText(const QModelIndex& index) const {
    const CellValue shown = value(index);
    if (const auto* const text = std::get_if<std::string>(&shown)) return toQt(*text);
    const auto cellShown = cell(index);
    if (!cellShown || cellShown->kind != Cell::Kind::checkBox) return {};
    return cellShown->imagePosition == Cell::ImagePosition::imageOnly ? QVariant{} : toQt(cellShown->title);
}

} // namespace letterloft
