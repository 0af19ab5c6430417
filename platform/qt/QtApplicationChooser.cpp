#include "platform/qt/QtApplicationChooser.h"

#include "platform/qt/QtFocusFrame.h"
#include "platform/qt/QtKeySelection.h"
#include "platform/qt/QtReadablePalette.h"
#include "platform/qt/QtText.h"
#include "platform/qt/QtWindow.h"

#include <QCollator>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace letterloft {

namespace {

constexpr int pathRole = Qt::UserRole;

// Gives every icon the same room, also those that are smaller than asked for.
class AlignedIcons final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        const QSize room = option->decorationSize;
        QStyledItemDelegate::initStyleOption(option, index);
        option->decorationSize = room;
        option->decorationAlignment = Qt::AlignCenter;
    }
};

QIcon iconOf(const QString& icon, const QIcon& unknown) {
    if (icon.startsWith(QLatin1Char{'/'})) return QFileInfo::exists(icon) ? QIcon{icon} : unknown;
    return icon.isEmpty() ? unknown : QIcon::fromTheme(icon, unknown);
}

bool isApplication(const QFileInfo& entry) {
    if (entry.isDir()) return entry.fileName().endsWith(QLatin1String{".app"});
    return entry.fileName().endsWith(QLatin1String{".desktop"}) || (entry.isFile() && entry.isExecutable());
}

} // namespace

QtApplicationChooser::QtApplicationChooser(const QtFileChooser::Wanted& wanted,
                                           const std::vector<InstalledApplications::Application>& applications)
    : wanted_{wanted},
      search_{new QLineEdit},
      list_{new QListWidget},
      confirm_{new QPushButton{plainTitle(wanted.prompt)}} {
    layOut();
    fill(applications);
    connect(search_, &QLineEdit::textChanged, this, &QtApplicationChooser::search);
    connect(list_, &QListWidget::itemActivated, this, &QtApplicationChooser::accept);
    connect(list_, &QListWidget::itemSelectionChanged, this,
            [this] { confirm_->setEnabled(!list_->selectedItems().isEmpty()); });
    search_->setFocus();
}

void QtApplicationChooser::layOut() {
    setWindowTitle(wanted_.message);
    search_->setPlaceholderText(tr("Search"));
    search_->setAccessibleName(tr("Search applications"));
    search_->setClearButtonEnabled(true);
    list_->setAccessibleName(tr("Installed applications"));
    list_->setItemDelegate(new AlignedIcons{list_});
    new QtKeySelection{*list_}; // owned by the list, as the next one
    new QtFocusFrame{*list_};
    search_->setPalette(withReadablePaleTexts(search_->palette()));
    list_->setIconSize({24, 24});
    list_->setUniformItemSizes(true);
    auto* const buttons = new QDialogButtonBox;
    buttons->addButton(confirm_, QDialogButtonBox::AcceptRole);
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    auto* const browseButton = buttons->addButton(tr("&Browse..."), QDialogButtonBox::ActionRole);
    confirm_->setEnabled(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &QtApplicationChooser::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QtApplicationChooser::reject);
    connect(browseButton, &QPushButton::clicked, this, &QtApplicationChooser::browse);
    auto* const column = new QVBoxLayout{this};
    for (QWidget* const widget : std::initializer_list<QWidget*>{plainLabel(wanted_.message), search_, list_, buttons})
        column->addWidget(widget);
    confirm_->setDefault(true); // after it has come into the dialog, or another button would be the default one
    resize(sizeHint().expandedTo({440, 420}));
}

void QtApplicationChooser::fill(std::vector<InstalledApplications::Application> applications) {
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(applications.begin(), applications.end(), [&collator](const auto& one, const auto& other) {
        return collator.compare(toQt(one.name), toQt(other.name)) < 0;
    });
    // Where the theme that the desktop names is not installed Qt 6.4 looks into a fallback alone, which need not be
    // there either. Applications put their icons into hicolor at the least (Icon Theme Specification).
    const QString usual = QStringLiteral("application-x-executable");
    if (!QIcon::hasThemeIcon(usual)) QIcon::setFallbackThemeName(QStringLiteral("hicolor"));
    const QIcon unknown = QIcon::fromTheme(usual, style()->standardIcon(QStyle::SP_FileIcon));
    for (const auto& application : applications) {
        auto* const item = new QListWidgetItem{iconOf(toQt(application.icon), unknown), toQt(application.name), list_};
        item->setData(pathRole, toQt(application.desktopFile));
        item->setToolTip(plainToolTip(toQt(application.desktopFile)));
    }
}

// Selects the first that fits, so that Return takes it.
void QtApplicationChooser::search(const QString& text) {
    QListWidgetItem* first = nullptr;
    for (int row = 0; row < list_->count(); ++row) {
        QListWidgetItem* const item = list_->item(row);
        item->setHidden(!item->text().contains(text, Qt::CaseInsensitive));
        if (!first && !item->isHidden()) first = item;
    }
    list_->setCurrentItem(text.isEmpty() ? nullptr : first);
    if (text.isEmpty() || !first) list_->clearSelection();
}

// The arrow keys reach the list from the search field too.
void QtApplicationChooser::keyPressEvent(QKeyEvent* event) {
    const bool moves = event->key() == Qt::Key_Down || event->key() == Qt::Key_Up;
    if (!moves || !search_->hasFocus()) return QDialog::keyPressEvent(event);
    list_->setFocus();
    for (int row = 0; list_->selectedItems().isEmpty() && row < list_->count(); ++row)
        if (!list_->item(row)->isHidden()) list_->setCurrentRow(row);
}

void QtApplicationChooser::accept() {
    const auto selected = list_->selectedItems();
    if (chosen_.isEmpty() && !selected.isEmpty()) chosen_ = selected.first()->data(pathRole).toString();
    if (!chosen_.isEmpty()) QDialog::accept();
}

void QtApplicationChooser::browse() {
    auto* const chooser = new QtFileChooser{wanted_, isApplication};
    chooser->setParent(this, Qt::Sheet);
    chooser->resize(chooser->size().boundedTo(QtWindow::roomFor(*this)));
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    connect(chooser, &QDialog::accepted, this, [this, chooser] {
        chosen_ = chooser->chosen();
        accept();
    });
    chooser->open();
}

} // namespace letterloft
