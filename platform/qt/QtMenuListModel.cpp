#include "platform/qt/QtMenuListModel.h"

#include "platform/qt/QtImage.h"
#include "platform/qt/QtMenuTitle.h"

namespace letterloft {

QtMenuListModel::QtMenuListModel(QtMenu& menu) : menu_{menu}, items_{menu.items()} {
    connect(&menu_, &QtMenu::changed, this, [this] { showItems(); });
}

int QtMenuListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(items_.size());
}

QVariant QtMenuListModel::data(const QModelIndex& index, int role) const {
    const auto shown = item(index);
    if (!shown || shown->isSeparatorItem()) return {};
    if (role == Qt::DisplayRole) return titleOfOneLine(shown->title());
    if (role == Qt::AccessibleDescriptionRole) return QtImage::meaningOf(shown->image());
    if (role == Qt::DecorationRole) return QtImage::iconOf(shown->image());
    return {};
}

Qt::ItemFlags QtMenuListModel::flags(const QModelIndex& index) const {
    const auto shown = item(index);
    return shown && shown->action() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

QString QtMenuListModel::marks() const {
    QStringList marks;
    for (const auto& shown : items_)
        if (const QString meaning = QtImage::meaningOf(shown->image()); !meaning.isEmpty())
            marks << titleOfOneLine(shown->title()) + QStringLiteral(": ") + meaning;
    return marks.join(QStringLiteral(", "));
}

bool QtMenuListModel::isSeparator(const QModelIndex& index) const {
    const auto shown = item(index);
    return shown && shown->isSeparatorItem();
}

void QtMenuListModel::choose(const QModelIndex& index) {
    if (auto chosen = item(index)) menu_.choose(std::move(chosen));
}

std::shared_ptr<QtMenuItem> QtMenuListModel::item(const QModelIndex& index) const {
    const auto row = static_cast<std::size_t>(index.row());
    return index.isValid() && row < items_.size() ? items_[row] : nullptr;
}

void QtMenuListModel::showItems() {
    beginResetModel();
    items_ = menu_.items();
    endResetModel();
}

} // namespace letterloft
