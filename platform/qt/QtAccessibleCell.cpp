#include "platform/qt/QtAccessibleCell.h"

#include "platform/qt/QtOutlineWidget.h"
#include "platform/qt/QtWindow.h"

#include <QHeaderView>
#include <QListView>

namespace letterloft {

namespace {

constexpr QLatin1String choose{"Press"};
constexpr QLatin1String edit{"Edit"};
constexpr QLatin1String expand{"Expand"};
constexpr QLatin1String collapse{"Collapse"};

bool isExpandable(const QAbstractItemView& view, const QModelIndex& cell) {
    return cell.column() == 0 && qobject_cast<const QTreeView*>(&view) && cell.model()->hasChildren(cell);
}

bool isExpanded(const QAbstractItemView& view, const QModelIndex& cell) {
    return isExpandable(view, cell) && static_cast<const QTreeView&>(view).isExpanded(cell);
}

bool isTicked(const QModelIndex& cell) { return cell.data(Qt::CheckStateRole).toInt() == Qt::Checked; }

// The one that a user would expect of a click comes first.
QStringList actionsOf(const QAbstractItemView& view, const QModelIndex& cell) {
    const Qt::ItemFlags flags = cell.flags();
    if (!flags.testFlag(Qt::ItemIsEnabled)) return {};
    QStringList names;
    if (qobject_cast<const QListView*>(&view)) names << choose;
    if (flags.testFlag(Qt::ItemIsUserCheckable)) names << QAccessibleActionInterface::toggleAction();
    if (isExpandable(view, cell)) names << (isExpanded(view, cell) ? collapse : expand);
    if (flags.testFlag(Qt::ItemIsEditable)) names << edit;
    return names << QAccessibleActionInterface::setFocusAction();
}

void act(QAbstractItemView& view, const QModelIndex& cell, const QString& name) {
    auto* const outline = dynamic_cast<QtOutlineWidget*>(&view);
    if (name == choose) {
        Q_EMIT view.clicked(cell);
    } else if (name == QAccessibleActionInterface::toggleAction()) {
        view.model()->setData(cell, isTicked(cell) ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    } else if (outline && name == expand) {
        outline->openByUser(cell);
    } else if (outline && name == collapse) {
        outline->closeByUser(cell);
    } else {
        const QPersistentModelIndex kept{cell};
        view.setFocus(); // hands over what is being edited, and an alert may be the answer
        if (!kept.isValid() || isBelowSheet(view)) return;
        view.selectionModel()->setCurrentIndex(kept, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        if (name == edit) view.edit(kept);
    }
}

} // namespace

QtAccessibleCell::QtAccessibleCell(QAbstractItemView& view, QAccessible::Role role, const QModelIndex& cell, int column)
    : view_{&view}, role_{role}, cell_{cell}, column_{column}, isHeader_{!cell.isValid()} {}

bool QtAccessibleCell::isValid() const { return view_ && view_->model() && (isHeader() || cell_.isValid()); }

QWindow* QtAccessibleCell::window() const { return view_ ? view_->window()->windowHandle() : nullptr; }

QAccessibleInterface* QtAccessibleCell::parent() const { return QAccessible::queryAccessibleInterface(view_); }

QString QtAccessibleCell::text(QAccessible::Text kind) const {
    if (!isValid()) return {};
    const bool isName = kind == QAccessible::Name;
    if (isHeader()) return isName ? view_->model()->headerData(column_, Qt::Horizontal).toString() : QString{};
    if (!isName && kind != QAccessible::Description) return {};
    const QString said = cell_.data(isName ? Qt::AccessibleTextRole : Qt::AccessibleDescriptionRole).toString();
    return said.isEmpty() && isName ? cell_.data(Qt::DisplayRole).toString() : said;
}

QRect QtAccessibleCell::rect() const {
    if (!isValid() || isHeader()) return {};
    const QRect shown = view_->visualRect(cell_);
    return {view_->viewport()->mapToGlobal(shown.topLeft()), shown.size()};
}

QAccessible::Role QtAccessibleCell::role() const {
    if (isHeader()) return QAccessible::ColumnHeader;
    const bool isBox = isValid() && cell_.flags().testFlag(Qt::ItemIsUserCheckable);
    return isBox ? QAccessible::CheckBox : role_;
}

QAccessible::State QtAccessibleCell::state() const {
    QAccessible::State state;
    state.invalid = !isValid();
    if (state.invalid) return state;
    if (isHeader()) {
        state.invisible = column_ < 0;
        return state;
    }
    const QRect shown = view_->visualRect(cell_);
    state.invisible = !view_->isVisible();
    state.offscreen = !shown.intersects(view_->viewport()->rect());
    addFlagsOfRow(state);
    return state;
}

void QtAccessibleCell::addFlagsOfRow(QAccessible::State& state) const {
    const Qt::ItemFlags flags = cell_.flags();
    const bool isEnabled = flags.testFlag(Qt::ItemIsEnabled);
    state.disabled = !isEnabled || !view_->isEnabled();
    state.selectable = state.focusable = isEnabled && flags.testFlag(Qt::ItemIsSelectable);
    state.selected = view_->selectionModel()->isSelected(cell_);
    state.focused = view_->hasFocus() && view_->currentIndex() == cell_;
    state.checkable = flags.testFlag(Qt::ItemIsUserCheckable);
    state.checked = state.checkable && isTicked(cell_);
    state.expandable = isExpandable(*view_, cell_);
    state.expanded = isExpanded(*view_, cell_);
    state.collapsed = state.expandable && !state.expanded;
}

void* QtAccessibleCell::interface_cast(QAccessible::InterfaceType type) {
    return type == QAccessible::ActionInterface && !isHeader() ? static_cast<QAccessibleActionInterface*>(this)
                                                               : nullptr;
}

QStringList QtAccessibleCell::actionNames() const {
    return isValid() && !isHeader() ? actionsOf(*view_, cell_) : QStringList{};
}

void QtAccessibleCell::doAction(const QString& name) {
    if (!actionNames().contains(name)) return;
    // Later: the rows may be new after it, this one deleted, and whoever asks over the bus waits for the end of the
    // call.
    const auto later = [view = view_, cell = cell_, name] {
        if (cell.isValid() && !isBelowSheet(*view) && actionsOf(*view, cell).contains(name)) act(*view, cell, name);
    };
    QMetaObject::invokeMethod(view_, later, Qt::QueuedConnection);
}

} // namespace letterloft
