#include "platform/qt/QtOutlineView.h"

#include "platform/qt/QtFocusFrame.h"
#include "platform/qt/QtKeySelection.h"
#include "platform/qt/QtOutlineState.h"
#include "platform/qt/QtText.h"

namespace letterloft {

QtOutlineView::QtOutlineView(QtOutlineWidget& widget) : widget_{widget}, cells_{new QtCellDelegate{widget}} {
    makeColumns();
    model_ = std::make_unique<QtOutlineModel>(*this, tableColumns(), widget.property("columnTitles").toStringList());
    widget_.setModel(model_.get());
    new QtKeySelection{widget_}; // owned by the widget, as the next one
    new QtFocusFrame{widget_};
    const auto widths = widget.property("columnWidths").toStringList();
    for (std::size_t section = 0; section < columns_.size(); ++section) {
        const double width = widths.value(static_cast<int>(section)).toDouble();
        if (width > 0) columns_[section]->setWidth(width);
    }
    watchRows();
}

QtOutlineView::~QtOutlineView() {
    model_->setDataSource(nullptr);
    model_->setDelegate(nullptr);
    widget_.setQuestions({}, {});
    dropEdit();
    widget_.setModel(nullptr);
}

void QtOutlineView::makeColumns() {
    widget_.header()->setSectionsMovable(false);
    const auto identifiers = widget_.property("columnIdentifiers").toStringList();
    for (int section = 0; section < identifiers.size(); ++section)
        columns_.push_back(
            std::make_unique<QtTableColumn>(*widget_.header(), section, fromQt(identifiers[section]), widget_));
}

void QtOutlineView::watchRows() {
    widget_.setQuestions(
        [this](const QModelIndex& row) {
            return !delegate_ || delegate_->outlineView_shouldExpandItem(*this, model_->item(row));
        },
        [this](const QModelIndex& row) {
            return !delegate_ || delegate_->outlineView_shouldCollapseItem(*this, model_->item(row));
        });
    QObject::connect(widget_.selectionModel(), &QItemSelectionModel::currentChanged, model_.get(),
                     [this](const QModelIndex& current) { model_->setCurrentRow(current.siblingAtColumn(0)); });
    QObject::connect(&widget_, &QTreeView::expanded, model_.get(),
                     [this](const QModelIndex& row) { countOpen(row, 1); });
    QObject::connect(&widget_, &QTreeView::collapsed, model_.get(),
                     [this](const QModelIndex& row) { countOpen(row, -1); });
}

void QtOutlineView::countOpen(const QModelIndex& row, int change) {
    if (const OutlineItem item = model_->item(row)) openRows_[*item] += change;
}

void QtOutlineView::setDataSource(OutlineViewDataSource* source) {
    model_->setDataSource(source);
    reloadData();
}

void QtOutlineView::setDelegate(OutlineViewDelegate* delegate) {
    delegate_ = delegate;
    model_->setDelegate(delegate);
    widget_.viewport()->update();
}

void QtOutlineView::reloadData() {
    dropEdit();
    const QtOutlineState state{widget_, *model_};
    openRows_.clear();
    model_->announceRows();
    state.restore(widget_, *model_);
}

std::optional<std::size_t> QtOutlineView::selectedRow() const {
    const QModelIndex wanted = selected();
    if (!wanted.isValid()) return std::nullopt;
    std::size_t row = 0;
    const bool notFound = visitShown({}, [&](const QModelIndex& shown) { return shown != wanted && (++row, true); });
    return notFound ? std::nullopt : std::optional{row};
}

OutlineItem QtOutlineView::itemAtRow(std::size_t row) const {
    OutlineItem item;
    visitShown({}, [&](const QModelIndex& shown) {
        if (row-- != 0) return true;
        item = model_->item(shown);
        return false;
    });
    return item;
}

OutlineItem QtOutlineView::parentForItem(const OutlineItem& item) const {
    if (!item) return std::nullopt;
    QModelIndex row = selected();
    if (!row.isValid() || model_->item(row) != item) {
        row = {};
        visitShown({}, [&](const QModelIndex& shown) {
            if (model_->item(shown) != item) return true;
            row = shown;
            return false;
        });
    }
    return model_->item(row.parent());
}

bool QtOutlineView::isItemExpanded(const OutlineItem& item) const {
    if (!item) return false;
    const auto found = openRows_.find(*item);
    return found != openRows_.end() && found->second > 0;
}

std::vector<TableColumn*> QtOutlineView::tableColumns() const {
    std::vector<TableColumn*> columns;
    for (const auto& column : columns_)
        columns.push_back(column.get());
    return columns;
}

TableColumn* QtOutlineView::tableColumnWithIdentifier(const std::string& identifier) const {
    for (const auto& column : columns_)
        if (column->identifier() == identifier) return column.get();
    return nullptr;
}

QModelIndex QtOutlineView::selected() const {
    const auto rows = widget_.selectionModel()->selectedRows();
    return rows.isEmpty() ? QModelIndex{} : rows.first();
}

// In the order shown. False if the visitor stopped.
bool QtOutlineView::visitShown(const QModelIndex& parent, const Visitor& visitor) const {
    for (int place = 0; place < model_->rowCount(parent); ++place) {
        const QModelIndex row = model_->index(place, 0, parent);
        if (!visitor(row)) return false;
        if (widget_.isExpanded(row) && !visitShown(row, visitor)) return false;
    }
    return true;
}

} // namespace letterloft
