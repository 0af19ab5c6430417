#include "platform/qt/QtStart.h"

#include "platform/qt/QtText.h"

#include <QMessageBox>

#include <cstdlib>

namespace letterloft {

namespace {

// A message handler of Qt is a bare function.
Log* startLog = nullptr;

// Qt ends a program without a display by abort(3), with many lines before.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*message*/) {
    if (type != QtFatalMsg) return;
    startLog->write("There is no display to show anything on: neither DISPLAY nor WAYLAND_DISPLAY leads to one.");
    std::_Exit(EXIT_FAILURE);
}

} // namespace

std::unique_ptr<QApplication> QtStart::makeApplication(int& argc, char** argv, Log& log) {
    startLog = &log;
    const auto usual = qInstallMessageHandler(endWithoutDisplay);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);
    // The status item's id and title on the bus, too.
    QCoreApplication::setApplicationName(QStringLiteral("Letterloft"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.letterloft.Letterloft"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return application;
}

int QtStart::showFailure(const std::string& sentence) {
    QMessageBox box{QMessageBox::Critical, QStringLiteral("Letterloft"), {}, QMessageBox::Close};
    box.setTextFormat(Qt::PlainText);
    box.setText(toQt(sentence));
    box.exec();
    return EXIT_FAILURE;
}

} // namespace letterloft
