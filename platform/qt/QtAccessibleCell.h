#pragma once

#include <QAbstractItemView>
#include <QAccessible>
#include <QPersistentModelIndex>
#include <QPointer>

namespace letterloft {

// One cell of a view for assistive technology, or the header of a column. Owned by Qt's cache; whoever made it has it
// deleted there. One whose row is gone is no longer valid.
class QtAccessibleCell final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    // The header of `column` if `cell` is none.
    QtAccessibleCell(QAbstractItemView& view, QAccessible::Role role, const QModelIndex& cell, int column);

    const QPersistentModelIndex& cell() const { return cell_; }
    int column() const { return column_; }

    bool isValid() const override;
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override;
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    bool isHeader() const { return isHeader_; }
    void addFlagsOfRow(QAccessible::State& state) const;

    const QPointer<QAbstractItemView> view_;
    const QAccessible::Role role_;
    const QPersistentModelIndex cell_;
    const int column_;
    const bool isHeader_;
};

} // namespace letterloft
