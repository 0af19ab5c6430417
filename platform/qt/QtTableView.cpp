#include "platform/qt/QtTableView.h"

#include "platform/qt/QtFocusFrame.h"
#include "platform/qt/QtKeySelection.h"
#include "platform/qt/QtText.h"

#include <QHeaderView>
#include <QScrollBar>

#include <algorithm>

namespace letterloft {

QtTableView::QtTableView(QTableView& widget) : widget_{widget}, delegate_{new QtCellDelegate{widget}} {
    const auto identifiers = widget.property("columnIdentifiers").toStringList();
    std::vector<TableColumn*> columns;
    for (int section = 0; section < identifiers.size(); ++section) {
        columns_.push_back(
            std::make_unique<QtTableColumn>(*widget.horizontalHeader(), section, fromQt(identifiers[section]), widget));
        columns.push_back(columns_.back().get());
    }
    model_ = std::make_unique<QtTableModel>(*this, columns, widget.property("columnTitles").toStringList());
    widget_.setModel(model_.get());
    new QtKeySelection{widget_}; // owned by the widget, as the next one
    new QtFocusFrame{widget_};
    widget_.verticalHeader()->setDefaultSectionSize(QtCellDelegate::rowHeight(widget));
    QObject::connect(widget_.selectionModel(), &QItemSelectionModel::selectionChanged, model_.get(),
                     [this] { rememberSelection(); });
    QObject::connect(model_.get(), &QAbstractItemModel::dataChanged, model_.get(), [this] { rememberSelection(); });
}

QtTableView::~QtTableView() {
    model_->setDataSource(nullptr);
    dropEdit();
    widget_.setModel(nullptr);
}

void QtTableView::setDataSource(TableViewDataSource* source) {
    model_->setDataSource(source);
    reloadData();
}

void QtTableView::reloadData() {
    dropEdit();
    const auto selected = selectedRow();
    const int scrolled = widget_.verticalScrollBar()->value();
    model_->announceRows();
    if (selected) select(placeAfterReload(static_cast<int>(*selected)));
    widget_.verticalScrollBar()->setValue(scrolled);
}

std::optional<std::size_t> QtTableView::selectedRow() const {
    const auto rows = widget_.selectionModel()->selectedRows();
    if (rows.isEmpty()) return std::nullopt;
    return static_cast<std::size_t>(rows.first().row());
}

QString QtTableView::textOfRow(int row) const { return model_->index(row, 0).data(Qt::DisplayRole).toString(); }

// The nearest row of that text: one elsewhere with the same text is not taken for the one that was selected.
int QtTableView::placeAfterReload(int oldRow) const {
    const int rows = model_->rowCount();
    for (int distance = 0; distance <= std::max(oldRow, rows); ++distance)
        for (const int row : {oldRow - distance, oldRow + distance})
            if (row >= 0 && row < rows && textOfRow(row) == selectedText_) return row;
    return -1;
}

void QtTableView::select(int row) {
    if (row < 0) return;
    widget_.selectionModel()->setCurrentIndex(model_->index(row, 0),
                                              QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void QtTableView::rememberSelection() {
    const auto selected = selectedRow();
    selectedText_ = selected ? textOfRow(static_cast<int>(*selected)) : QString{};
}

} // namespace letterloft
