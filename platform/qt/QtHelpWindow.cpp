#include "platform/qt/QtHelpWindow.h"

#include <QShortcut>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace letterloft {

namespace {

constexpr QSize usualSize{820, 600}; // as wide as its widest picture
constexpr qreal marginInPixels = 12;

// Qt's blue for links, and that of many a theme, is meant for light pages (6.4).
void makeLinksReadable(const QWidget& page, QTextDocument& document) {
    const QPalette& colors = page.palette();
    if (colors.color(QPalette::Base).lightness() < colors.color(QPalette::Text).lightness())
        document.setDefaultStyleSheet(QStringLiteral("a { color: #8ab4f8 }"));
}

} // namespace

QtHelpWindow::QtHelpWindow(NotificationCenter& notifications) : notifications_{notifications} {}

void QtHelpWindow::show() {
    if (!window_) {
        auto widget = std::make_unique<QWidget>();
        widget->setWindowTitle(QStringLiteral("Letterloft Help"));
        widget->resize(usualSize);
        auto* const browser = new QTextBrowser;
        browser->setAccessibleName(widget->windowTitle());
        browser->setFrameShape(QFrame::NoFrame);
        browser->document()->setDocumentMargin(marginInPixels);
        makeLinksReadable(*browser, *browser->document());
        browser->setSource(QUrl{QStringLiteral("qrc:/help/index.html")});
        auto* const page = new QVBoxLayout{widget.get()};
        page->setContentsMargins({});
        page->addWidget(browser);
        auto* const close = new QShortcut{QKeySequence{Qt::Key_Escape}, widget.get()};
        QObject::connect(close, &QShortcut::activated, widget.get(), &QWidget::close);
        window_ = std::make_unique<QtWindow>(std::move(widget), notifications_);
    }
    window_->makeKeyAndOrderFront();
}

} // namespace letterloft
