#include "platform/qt/QtWindow.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace letterloft {

bool isBelowSheet(const QWidget& widget) {
    const auto dialogs = widget.window()->findChildren<QDialog*>();
    return std::any_of(dialogs.cbegin(), dialogs.cend(),
                       [](const QDialog* dialog) { return dialog->isVisible() && dialog->isModal(); });
}

QtWindow::QtWindow(std::unique_ptr<QWidget> widget, NotificationCenter& notifications)
    : widget_{std::move(widget)}, notifications_{notifications} {
    widget_->installEventFilter(this);
    QCoreApplication::instance()->installEventFilter(this);
}

QtWindow::~QtWindow() {
    widget_->removeEventFilter(this);
    endSheet();
}

void QtWindow::makeKeyAndOrderFront() {
    // A sheet that was there before the window is shown anew behind it, or it would be covered, and without the focus.
    const bool sheetWaits = sheet_ && !widget_->isVisible();
    if (sheetWaits) sheet_->hide();
    if (!placeBefore_)
        fitToScreen();
    else if (!widget_->isVisible())
        widget_->move(*placeBefore_); // window managers place a window anew otherwise
    placeBefore_ = widget_->pos();
    widget_->setWindowState(widget_->windowState() & ~Qt::WindowMinimized);
    widget_->show();
    widget_->raise();
    if (sheetWaits) sheet_->show();
    QWidget* const front = sheet_ ? static_cast<QWidget*>(sheet_) : widget_.get();
    front->raise();
    front->activateWindow();
}

void QtWindow::close() {
    if (closing_) return;
    prepareToClose();
    widget_->hide();
}

void QtWindow::endSheet() {
    QDialog* const sheet = sheet_;
    if (!sheet) return;
    sheet_ = nullptr;
    sheet->disconnect(this);
    for (QDialog* const inner : sheet->findChildren<QDialog*>())
        inner->hide();
    sheet->hide();
    sheet->deleteLater();
}

QSize QtWindow::roomFor(const QWidget& window) { return window.screen()->availableGeometry().size() * 0.95; }

void QtWindow::beforeClosing(std::function<void()> handler) { beforeClosing_.push_back(std::move(handler)); }

bool QtWindow::beginSheet(std::unique_ptr<QDialog> sheet, std::function<void()> answered) {
    if (sheet_) return false;
    sheet_ = sheet.release();
    sheet_->setParent(widget_.get(), Qt::Sheet);
    connect(sheet_, &QDialog::finished, this, [this, answered = std::move(answered)] {
        const auto running = answered;
        sheet_->disconnect(this);
        std::exchange(sheet_, nullptr)->deleteLater();
        running();
    });
    sheet_->resize(sheet_->size().boundedTo(roomFor(*sheet_)));
    sheet_->open();
    return true;
}

bool QtWindow::eventFilter(QObject* watched, QEvent* event) {
    // QCoreApplication::quit() closes every window, and sheets then report an answer that nobody gave (Qt 6.4).
    if (event->type() == QEvent::Quit && watched == QCoreApplication::instance()) prepareToEnd();
    // Comes twice for one closing (Qt 6.4); the second one finds the window hidden.
    if (event->type() == QEvent::Close && watched == widget_.get() && !ending_) close();
    return false;
}

void QtWindow::prepareToClose() {
    closing_ = true;
    if (widget_->isVisible()) placeBefore_ = widget_->pos();
    for (const auto& handler : beforeClosing_)
        handler();
    endSheet();
    if (widget_->isVisible()) notifications_.post(NotificationCenter::windowWillClose, static_cast<Window*>(this));
    closing_ = false;
}

void QtWindow::prepareToEnd() {
    ending_ = true;
    for (const auto& handler : beforeClosing_)
        handler();
    endSheet();
    // Reached only if something refused the end, and the program goes on.
    QMetaObject::invokeMethod(
        this, [this] { ending_ = false; }, Qt::QueuedConnection);
}

// The size an interface file gives is meant for a font 16 points high.
void QtWindow::fitToScreen() {
    const qreal largerFont = std::max(1.0, widget_->fontMetrics().height() / 16.0);
    widget_->resize((widget_->size() * largerFont).expandedTo(widget_->sizeHint()).boundedTo(roomFor(*widget_)));
}

} // namespace letterloft
