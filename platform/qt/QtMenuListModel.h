#pragma once

#include "platform/qt/QtMenu.h"

#include <QAbstractListModel>

namespace letterloft {

// A QtMenu as the rows of a list; follows its changes.
class QtMenuListModel final : public QAbstractListModel {
public:
    explicit QtMenuListModel(QtMenu& menu);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // The rows with an image that says something, and what it says.
    QString marks() const;

    bool isSeparator(const QModelIndex& index) const;
    void choose(const QModelIndex& index);

private:
    std::shared_ptr<QtMenuItem> item(const QModelIndex& index) const;
    void showItems();

    QtMenu& menu_;
    std::deque<std::shared_ptr<QtMenuItem>> items_; // the rows as the list shows them; the menu may be ahead
};

} // namespace letterloft
