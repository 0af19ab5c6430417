#include "platform/qt/QtCellDelegate.h"

#include <QLineEdit>
#include <QPainter>
#include <QStyle>

namespace letterloft {

namespace {

// The style Fusion draws a check box's frame darker than the window, so on a dark page none is seen (Qt 6.4).
bool hidesBoxes(const QStyleOptionViewItem& option) {
    const QPalette& colors = option.palette;
    const bool isDark = colors.color(QPalette::Base).lightness() < colors.color(QPalette::Text).lightness();
    return isDark && option.widget && option.widget->style()->name() == QLatin1String{"fusion"};
}

} // namespace

QtCellDelegate::QtCellDelegate(QAbstractItemView& view) : QStyledItemDelegate{&view} { view.setItemDelegate(this); }

void QtCellDelegate::dropEdit() {
    if (!editor_) return;
    handedOver_ = true;
    QWidget* const open = editor_;
    editor_ = nullptr;
    Q_EMIT closeEditor(open, QAbstractItemDelegate::RevertModelCache);
}

QSize QtCellDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QSize hint = QStyledItemDelegate::sizeHint(option, index);
    return option.widget ? hint.expandedTo({0, rowHeight(*option.widget)}) : hint;
}

void QtCellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyledItemDelegate::paint(painter, option, index);
    if (!hidesBoxes(option)) return;
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    if (!cell.features.testFlag(QStyleOptionViewItem::HasCheckIndicator)) return;
    const QRect box = option.widget->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &cell, cell.widget);
    QColor frame = cell.palette.color(QPalette::Text);
    frame.setAlphaF(0.5F);
    painter->save();
    painter->setPen(frame);
    painter->drawRect(box.adjusted(0, 0, -1, -1));
    painter->restore();
}

QWidget* QtCellDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                      const QModelIndex& index) const {
    handedOver_ = false;
    editor_ = QStyledItemDelegate::createEditor(parent, option, index);
    if (editor_) editor_->setAccessibleName(index.model()->headerData(index.column(), Qt::Horizontal).toString());
    return editor_;
}

void QtCellDelegate::destroyEditor(QWidget* editor, const QModelIndex& index) const {
    if (editor == editor_) editor_ = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
}

void QtCellDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const {
    // An alert that the model raises takes the focus, and the view would commit a second time.
    if (handedOver_ || editor != editor_) return;
    handedOver_ = true;
    QStyledItemDelegate::setModelData(editor, model, index);
}

bool QtCellDelegate::eventFilter(QObject* object, QEvent* event) {
    auto* const editor = qobject_cast<QWidget*>(object);
    if (!editor || editor != editor_) return false;
    if (event->type() == QEvent::KeyPress) return handleKey(*editor, *static_cast<QKeyEvent*>(event));
    if (event->type() == QEvent::ShortcutOverride) return QStyledItemDelegate::eventFilter(object, event);
    if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) handOver(*editor);
    }
    return false;
}

bool QtCellDelegate::handleKey(QWidget& editor, const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        handOver(editor);
        return true;
    case Qt::Key_Escape:
        dropEdit();
        return true;
    case Qt::Key_Home:
    case Qt::Key_End:
        return moveToEnd(editor, event);
    default:
        return false;
    }
}

// With Ctrl too, which a line of text has no use for by itself (Qt 6.4).
bool QtCellDelegate::moveToEnd(QWidget& editor, const QKeyEvent& event) {
    auto* const line = qobject_cast<QLineEdit*>(&editor);
    if (!line) return false;
    const bool marks = event.modifiers().testFlag(Qt::ShiftModifier);
    event.key() == Qt::Key_Home ? line->home(marks) : line->end(marks);
    return true;
}

void QtCellDelegate::handOver(QWidget& editor) {
    if (handedOver_) return;
    Q_EMIT commitData(&editor);
    if (editor_ != &editor) return; // rows were reloaded, and the view has closed it
    editor_ = nullptr;
    Q_EMIT closeEditor(&editor, QAbstractItemDelegate::NoHint);
}

} // namespace letterloft
