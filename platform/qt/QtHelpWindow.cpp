#include "platform/qt/QtHelpWindow.h"

#include <QShortcut>
#include <QTextBrowser>

namespace letterloft {

namespace {

constexpr QSize usualSize{560, 520};

} // namespace

QtHelpWindow::QtHelpWindow(NotificationCenter& notifications) : notifications_{notifications} {}

void QtHelpWindow::show() {
    if (!window_) {
        auto browser = std::make_unique<QTextBrowser>();
        browser->setWindowTitle(QStringLiteral("Letterloft Help"));
        browser->resize(usualSize);
        browser->setSource(QUrl{QStringLiteral("qrc:/help/index.html")});
        auto* const close = new QShortcut{QKeySequence{Qt::Key_Escape}, browser.get()};
        QObject::connect(close, &QShortcut::activated, browser.get(), &QWidget::close);
        window_ = std::make_unique<QtWindow>(std::move(browser), notifications_);
    }
    window_->makeKeyAndOrderFront();
}

} // namespace letterloft
