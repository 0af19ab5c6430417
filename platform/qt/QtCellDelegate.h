#pragma once

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QPointer>
#include <QStyledItemDelegate>

namespace letterloft {

// Editing in place. Return, Tab and leaving the cell hand the text to the model, once; Escape drops it. Another window
// coming to the front does not leave the cell.
class QtCellDelegate final : public QStyledItemDelegate {
public:
    // Sets itself as the view's delegate.
    explicit QtCellDelegate(QAbstractItemView& view);

    // Takes an open editor away without handing its text over.
    void dropEdit();

    // How high a row is that can be hit with ease, for the view's font.
    static int rowHeight(const QWidget& view) { return view.fontMetrics().height() * 3 / 2; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    bool handleKey(QWidget& editor, const QKeyEvent& event);
    static bool moveToEnd(QWidget& editor, const QKeyEvent& event);
    void handOver(QWidget& editor);

    mutable QPointer<QWidget> editor_; // createEditor is const in Qt
    mutable bool handedOver_ = false;
};

} // namespace letterloft
