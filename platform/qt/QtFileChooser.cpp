#include "platform/qt/QtFileChooser.h"

#include "platform/qt/QtCellDelegate.h"
#include "platform/qt/QtFocusFrame.h"
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
#include <utility>

namespace letterloft {

namespace {

// Bytes that are no UTF-8 reach us as U+FFFD, a character that a name can also hold by itself.
bool canBeStored(const QString& path) {
    struct stat entry {};
    return !path.contains(QChar::ReplacementCharacter) || ::lstat(fromQt(path).c_str(), &entry) == 0;
}

bool isThere(const QFileInfo& entry) { return entry.exists() || entry.isSymLink(); }

// The home folder and those above it: where everybody passes through, and what nobody means to give away.
bool holdsHome(const QFileInfo& entry) {
    const QString real = entry.canonicalFilePath();
    const QString home = QFileInfo{QDir::homePath()}.canonicalFilePath();
    return !real.isEmpty() && (real == home || home.startsWith(real.endsWith(u'/') ? real : real + u'/'));
}

// Whether Qt leaves an entry out of its listing because its name is no UTF-8 (Qt 6.4).
bool leavesOutEntries(const QString& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry{fromQt(folder), error}, end; !error && entry != end;
         entry.increment(error))
        if (!isUtf8(entry->path().filename().native())) return true;
    return false;
}

} // namespace

QVariant QtFileChooser::Entries::data(const QModelIndex& index, int role) const {
    constexpr int sizeColumn = 1;
    if (role == Qt::DisplayRole && index.column() == sizeColumn && size(index) < 0) return {};
    return QFileSystemModel::data(index, role);
}

QtFileChooser::QtFileChooser(const Wanted& wanted, Filter canChoose)
    : canChoose_{std::move(canChoose)},
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
    showFolder(QFileInfo{wanted.folder}.isDir() ? wanted.folder : QDir::homePath());
    isShownOffered_ = false;
    wire();
    updateConfirm();
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
    new QtCellDelegate{*entries_}; // owned by the view, as the next two
    new QtKeySelection{*entries_};
    new QtFocusFrame{*entries_};
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
    confirm_->setDefault(true); // once it is in the dialog, or Qt would make another one the default when it is shown
    resize(sizeHint().expandedTo({720, 440}));
}

void QtFileChooser::wire() {
    connect(location_, &QLineEdit::returnPressed, this, &QtFileChooser::goToTyped);
    connect(location_, &QLineEdit::textChanged, this, &QtFileChooser::preferTyped);
    connect(up_, &QPushButton::clicked, this, &QtFileChooser::goUp);
    connect(entries_, &QTreeView::activated, this, &QtFileChooser::activate);
    connect(entries_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &QtFileChooser::preferSelected);
    connect(&model_, &QFileSystemModel::layoutChanged, this, &QtFileChooser::scrollToLeft);
    location_->installEventFilter(this);
    entries_->installEventFilter(this);
}

void QtFileChooser::showFolder(const QString& folder) {
    const QModelIndex index = model_.index(folder);
    if (!index.isValid()) return tellNothingAt(folder);
    entries_->setRootIndex(index);
    entries_->selectionModel()->clear();
    problem_->hide();
    shown_ = model_.filePath(index);
    isShownOffered_ = true;
    location_->setText(shown_);
    notListed_->setVisible(leavesOutEntries(shown_));
    updateConfirm();
}

void QtFileChooser::goUp() {
    left_ = shown_;
    showFolder(QFileInfo{left_}.absolutePath());
    const QModelIndex index = model_.index(left_);
    if (index.parent() != entries_->rootIndex()) return; // "/" is its own parent
    const auto selection = holdsHome(QFileInfo{left_})
                               ? QItemSelectionModel::NoUpdate
                               : QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
    entries_->selectionModel()->setCurrentIndex(index, selection);
    entries_->scrollTo(index);
}

// The others of a large folder are listed later, around the one that is selected already.
void QtFileChooser::scrollToLeft() {
    if (!left_.isEmpty() && selectedPath() == left_) entries_->scrollTo(model_.index(left_));
}

void QtFileChooser::tell(const QString& problem) {
    problem_->setText(problem);
    problem_->show();
}

void QtFileChooser::goToTyped() {
    if (location_->text().isEmpty()) return;
    const QFileInfo typed{typedPath()};
    if (typed.isDir()) return showFolder(typed.filePath());
    if (!isThere(typed)) return tellNothingAt(typed.filePath());
    if (confirm_->isEnabled()) return accept();
    tell(tr("%1 can't be chosen here.").arg(typed.filePath()));
}

void QtFileChooser::tellNothingAt(const QString& path) { tell(tr("There is no file or folder %1.").arg(path)); }

void QtFileChooser::activate(const QModelIndex& entry) {
    const QFileInfo info{model_.filePath(entry)};
    if (info.isDir())
        showFolder(info.filePath());
    else if (confirm_->isEnabled())
        accept();
}

void QtFileChooser::accept() {
    updateConfirm();
    if (!confirm_->isEnabled()) return;
    const QString path = wantedPath();
    if (!canBeStored(path)) return tell(tr("%1 can't be managed, because its name is not valid UTF-8 text.").arg(path));
    chosen_ = path;
    QDialog::accept();
}

void QtFileChooser::done(int result) {
    if (parentWidget()) parentWidget()->activateWindow();
    QDialog::done(result);
}

void QtFileChooser::preferTyped() {
    if (isTyped()) entries_->selectionModel()->clearSelection();
    problem_->hide();
    updateConfirm();
}

// A selected entry can vanish. Then nothing is chosen until the user says what, least of all the folder it was in.
void QtFileChooser::preferSelected() {
    if (!selectedPath().isEmpty()) {
        isShownOffered_ = false;
        location_->setText(shown_);
        problem_->hide();
    }
    updateConfirm();
}

void QtFileChooser::updateConfirm() {
    const QFileInfo wanted{wantedPath()};
    const bool isSaid = !selectedPath().isEmpty() || (isThere(wanted) && !holdsHome(wanted));
    confirm_->setEnabled(isSaid && canChoose_(wanted));
    updateDefault();
}

// Return goes into a folder.
void QtFileChooser::updateDefault() {
    if (qobject_cast<QPushButton*>(focusWidget())) return;
    confirm_->setDefault(confirm_->isEnabled() && !QFileInfo{wantedPath()}.isDir());
}

// Qt makes the confirm button the default one again when another button loses the focus (6.4).
bool QtFileChooser::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) updateDefault();
    return QDialog::eventFilter(watched, event);
}

bool QtFileChooser::isTyped() const { return location_->text() != shown_; }

QString QtFileChooser::typedPath() const {
    QString text = location_->text();
    if (text == u'~' || text.startsWith(QLatin1String{"~/"})) text.replace(0, 1, QDir::homePath());
    return QDir::cleanPath(QDir{shown_}.absoluteFilePath(text));
}

QString QtFileChooser::selectedPath() const {
    const auto rows = entries_->selectionModel()->selectedRows();
    return rows.isEmpty() ? QString{} : model_.filePath(rows.first());
}

QString QtFileChooser::wantedPath() const {
    if (isTyped()) return location_->text().isEmpty() ? QString{} : typedPath();
    return isShownOffered_ ? shown_ : selectedPath();
}

} // namespace letterloft
