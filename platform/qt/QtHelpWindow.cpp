#include "platform/qt/QtHelpWindow.h"

#include <QShortcut>
#include <QTextBrowser>

namespace letterloft {

namespace {

constexpr QSize usualSize{760, 580}; // as wide as its widest picture
constexpr qreal marginInPixels = 12;

// Without a desktop's theme Qt's blue for links is meant for light pages (6.4).
void makeLinksReadable(QWidget& page) {
    QPalette colors = page.palette();
    if (colors.color(QPalette::Base).lightness() >= colors.color(QPalette::Text).lightness()) return;
    constexpr QColor lightBlue{138, 180, 248};
    colors.setColor(QPalette::Link, lightBlue);
    colors.setColor(QPalette::LinkVisited, lightBlue);
    page.setPalette(colors);
}

} // namespace

QtHelpWindow::QtHelpWindow(NotificationCenter& notifications) : notifications_{notifications} {}

void QtHelpWindow::show() {
    if (!window_) {
        auto browser = std::make_unique<QTextBrowser>();
        browser->setWindowTitle(QStringLiteral("Letterloft Help"));
        browser->resize(usualSize);
        browser->document()->setDocumentMargin(marginInPixels);
        makeLinksReadable(*browser);
        browser->setSource(QUrl{QStringLiteral("qrc:/help/index.html")});
        auto* const close = new QShortcut{QKeySequence{Qt::Key_Escape}, browser.get()};
        QObject::connect(close, &QShortcut::activated, browser.get(), &QWidget::close);
        window_ = std::make_unique<QtWindow>(std::move(browser), notifications_);
    }
    window_->makeKeyAndOrderFront();
}

} // namespace letterloft
