#include "platform/qt/QtFileChooser.h"

#include "platform/qt/QtCellDelegate.h"
#include "platform/qt/QtKeySelection.h"
#include "platform/qt/QtText.h"
#include "storage/Text.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include <filesystem>
#include <sys/stat.h>

namespace letterloft {

namespace {

// Bytes that are no UTF-8 reach us as U+FFFD, a character that a name can also hold by itself.
bool canBeStored(const QString& path) {
    struct stat entry {};
    return !path.contains(QChar::ReplacementCharacter) || ::lstat(fromQt(path).c_str(), &entry) == 0;
}

// Whether Qt leaves an entry out of its listing because its name is no UTF-8 (Qt 6.4).
bool leavesOutEntries(const QString& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry{fromQt(folder), error}, end; !error && entry != end;
         entry.increment(error))
        if (!isUtf8(entry->path().filename().native())) return true;
    return false;
}

QLabel* plainLabel(const QString& text) {
    auto* const label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setText(text);
    return label;
}

} // namespace

QVariant QtFileChooser::Entries::data(const QModelIndex& index, int role) const {
    constexpr int sizeColumn = 1;
    if (role == Qt::DisplayRole && index.column() == sizeColumn && size(index) < 0) return {};
    return QFileSystemModel::data(index, role);
}

QtFileChooser::QtFileChooser(const Wanted& wanted)
    : canChoose_{wanted.canChoose},
      location_{new QLineEdit},
      up_{new QPushButton{tr("&Up")}},
      entries_{new QTreeView},
      notListed_{plainLabel(tr("Some entries of this folder are not listed: their names are not valid UTF-8 text, so "
                               "they can't be managed."))},
      problem_{plainLabel({})},
      confirm_{new QPushButton{plainTitle(wanted.prompt)}} {
    model_.setFilter(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    model_.setResolveSymlinks(false);
    model_.setReadOnly(true);
    model_.setIconProvider(&icons_);
    model_.setRootPath(QStringLiteral("/"));
    entries_->setModel(&model_);
    layOut(wanted);
    wire();
    showFolder(QFileInfo{wanted.folder}.isDir() ? wanted.folder : QDir::homePath());
    entries_->setFocus();
}

void QtFileChooser::layOut(const Wanted& wanted) {
    setWindowTitle(wanted.message);
    auto* const locationLabel = new QLabel{tr("&Folder:")};
    locationLabel->setBuddy(location_);
    auto* const locationRow = new QHBoxLayout;
    for (QWidget* const widget : std::initializer_list<QWidget*>{locationLabel, location_, up_})
        locationRow->addWidget(widget);
    entries_->setAccessibleName(tr("Files and folders"));
    entries_->setRootIsDecorated(false);
    entries_->setItemsExpandable(false);
    entries_->setExpandsOnDoubleClick(false);
    entries_->setUniformRowHeights(true);
    entries_->setSortingEnabled(true);
    entries_->sortByColumn(0, Qt::AscendingOrder);
    entries_->setTextElideMode(Qt::ElideMiddle);
    new QtCellDelegate{*entries_}; // owned by the view, as the next one
    new QtKeySelection{*entries_};
    entries_->header()->setStretchLastSection(false);
    entries_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    entries_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    notListed_->hide();
    problem_->hide();
    auto* const buttons = new QDialogButtonBox;
    buttons->addButton(confirm_, QDialogButtonBox::AcceptRole);
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QtFileChooser::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QtFileChooser::reject);
    auto* const column = new QVBoxLayout{this};
    column->addWidget(plainLabel(wanted.message));
    column->addLayout(locationRow);
    column->addWidget(entries_, 1);
    column->addWidget(notListed_);
    column->addWidget(problem_);
    column->addWidget(buttons);
    confirm_->setDefault(true); // after it has come into the dialog, or another button would be the default one
    resize(sizeHint().expandedTo({720, 440}));
}

void QtFileChooser::wire() {
    connect(location_, &QLineEdit::returnPressed, this, &QtFileChooser::goToTypedFolder);
    connect(up_, &QPushButton::clicked, this,
            [this] { showFolder(QFileInfo{model_.filePath(entries_->rootIndex())}.absolutePath()); });
    connect(entries_, &QTreeView::activated, this, &QtFileChooser::activate);
    connect(entries_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &QtFileChooser::updateConfirm);
}

void QtFileChooser::showFolder(const QString& folder) {
    const QModelIndex index = model_.index(folder);
    if (!index.isValid()) return tellNoFolder(folder);
    entries_->setRootIndex(index);
    entries_->selectionModel()->clear();
    problem_->hide();
    location_->setText(folder);
    updateConfirm();
    notListed_->setVisible(leavesOutEntries(folder));
}

void QtFileChooser::tell(const QString& problem) {
    problem_->setText(problem);
    problem_->show();
}

void QtFileChooser::goToTypedFolder() {
    const QFileInfo typed{QDir::cleanPath(location_->text())};
    if (typed.isAbsolute() && typed.isDir()) return showFolder(typed.filePath());
    tellNoFolder(location_->text());
}

// The Return that ends the typing also presses the confirm button, so nothing may stay selected.
void QtFileChooser::tellNoFolder(const QString& folder) {
    entries_->selectionModel()->clearSelection();
    tell(tr("There is no folder %1.").arg(folder));
}

void QtFileChooser::activate(const QModelIndex& entry) {
    const QFileInfo info{model_.filePath(entry)};
    if (info.isDir())
        showFolder(info.filePath());
    else if (confirm_->isEnabled())
        accept();
}

void QtFileChooser::accept() {
    const QString path = selectedPath();
    if (path.isEmpty() || !confirm_->isEnabled()) return;
    if (!canBeStored(path)) return tell(tr("%1 can't be managed, because its name is not valid UTF-8 text.").arg(path));
    chosen_ = path;
    QDialog::accept();
}

void QtFileChooser::updateConfirm() {
    const QString path = selectedPath();
    if (!path.isEmpty()) problem_->hide();
    confirm_->setEnabled(!path.isEmpty() && canChoose_(QFileInfo{path}));
}

QString QtFileChooser::selectedPath() const {
    const auto rows = entries_->selectionModel()->selectedRows();
    return rows.isEmpty() ? QString{} : model_.filePath(rows.first());
}

} // namespace letterloft
