#include "platform/qt/QtSmallMenuWindow.h"

#include "platform/qt/QtFocusFrame.h"
#include "platform/qt/QtReadablePalette.h"
#include "platform/qt/QtText.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace letterloft {

namespace {

// Longer than a panel takes to start, or to start again.
constexpr std::chrono::seconds patience{10};

constexpr QSize usualSize{320, 280};
constexpr int rowHeight = 24;
constexpr QSize markSize{16, 16};

// Draws a separator as a line, and every title behind the place for a mark.
class MenuRowDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        if (!isSeparator(index)) return QStyledItemDelegate::paint(painter, option, index);
        painter->setPen(option.palette.color(QPalette::Mid));
        painter->drawLine(option.rect.left(), option.rect.center().y(), option.rect.right(), option.rect.center().y());
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QSize usual = QStyledItemDelegate::sizeHint(option, index);
        return {usual.width(), std::max(usual.height(), rowHeight)};
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->decorationSize = markSize;
    }

private:
    static bool isSeparator(const QModelIndex& index) {
        return static_cast<const QtMenuListModel*>(index.model())->isSeparator(index);
    }
};

} // namespace

QtSmallMenuWindow::QtSmallMenuWindow(QtMenu& menu, QtTrayHost& host, NotificationCenter& notifications)
    : menu_{menu}, host_{host}, notifications_{notifications} {
    patience_.setSingleShot(true);
    patience_.setInterval(patience);
    connect(&patience_, &QTimer::timeout, this, [this] {
        show(QStringLiteral(
            "There is no panel here that shows status icons, so the menu of Letterloft is in this window."));
    });
    connect(&host_, &QtTrayHost::changed, this, [this] { hostChanged(); });
    hostChanged();
}

void QtSmallMenuWindow::showAsAsked() {
    patience_.stop(); // once seen and closed it is not to come by itself
    show(host_.isThere()
             ? QStringLiteral("Letterloft is running. Its menu is in the panel, and also here.")
             : QStringLiteral("Letterloft is running. No panel shows its icon, so its menu is in this window."));
}

void QtSmallMenuWindow::showAsActivated() {
    if (!host_.isUndecided()) showAsAsked();
}

void QtSmallMenuWindow::hostChanged() {
    if (!host_.isThere()) return patience_.start();
    patience_.stop();
    if (window_) window_->close();
}

void QtSmallMenuWindow::show(const QString& why) {
    if (!window_) makeWindow();
    why_->setText(why);
    window_->makeKeyAndOrderFront();
}

void QtSmallMenuWindow::makeWindow() {
    auto widget = std::make_unique<QWidget>();
    widget->setWindowTitle(QStringLiteral("Letterloft"));
    widget->resize(usualSize);
    why_ = plainLabel({});
    model_ = std::make_unique<QtMenuListModel>(menu_);
    list_ = new QListView;
    list_->setAccessibleName(QStringLiteral("Letterloft Menu"));
    list_->setUniformItemSizes(true);
    list_->setIconSize(markSize);
    list_->setPalette(withReadablePaleTexts(list_->palette()));
    list_->setItemDelegate(new MenuRowDelegate{list_});
    list_->setModel(model_.get());
    list_->setAccessibleDescription(model_->marks());
    list_->installEventFilter(this);
    new QtFocusFrame{*list_}; // owned by the list
    connect(list_, &QListView::clicked, this, [this](const QModelIndex& index) { model_->choose(index); });
    keepCurrentRow();
    auto* const layout = new QVBoxLayout{widget.get()};
    layout->addWidget(why_);
    layout->addWidget(list_);
    window_ = std::make_unique<QtWindow>(std::move(widget), notifications_);
}

// The rows are all new after a change; the keyboard stays where it was. No key leads to a row that can't be chosen, so
// the list itself says which account is current.
void QtSmallMenuWindow::keepCurrentRow() {
    connect(model_.get(), &QAbstractItemModel::modelAboutToBeReset, list_, [this] {
        const int row = list_->currentIndex().row();
        connect(
            model_.get(), &QAbstractItemModel::modelReset, list_,
            [this, row] {
                list_->setCurrentIndex(model_->index(row));
                list_->setAccessibleDescription(model_->marks());
            },
            Qt::SingleShotConnection);
    });
}

bool QtSmallMenuWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != list_ || event->type() != QEvent::KeyPress) return false;
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        model_->choose(list_->currentIndex());
        return true;
    case Qt::Key_Escape:
        window_->close();
        return true;
    default:
        return false;
    }
}

} // namespace letterloft
