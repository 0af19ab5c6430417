#include "platform/qt/QtStart.h"

#include "platform/qt/QtAccessibility.h"
#include "platform/qt/QtReadablePalette.h"
#include "platform/qt/QtText.h"
#include "storage/Text.h"

#include <QMessageBox>
#include <QStringList>

#include <cstdlib>

namespace letterloft {

namespace {

struct Start {
    Log& log;
    QStringList warnings;
};

// A message handler of Qt is a bare function.
Start* currentStart = nullptr;

// Qt ends a program without a display by abort(3); what it said before is the reason.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    if (type == QtWarningMsg || type == QtCriticalMsg) currentStart->warnings << message.trimmed();
    if (type != QtFatalMsg) return;
    const QStringList& warnings = currentStart->warnings;
    const QString reason = warnings.isEmpty() ? message : warnings.join(QLatin1String{"; "});
    currentStart->log.write(filledForLog("There is no display that Letterloft can use: %@", {reason.toStdString()}));
    std::_Exit(EXIT_FAILURE);
}

} // namespace

std::unique_ptr<QApplication> QtStart::makeApplication(int& argc, char** argv, Log& log) {
    Start start{log, {}};
    currentStart = &start;
    const auto usual = qInstallMessageHandler(endWithoutDisplay);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);
    currentStart = nullptr;
    // The status item's id and title on the bus, too.
    QCoreApplication::setApplicationName(QStringLiteral("Letterloft"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.letterloft.Letterloft"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QtAccessibility::install();
    QApplication::setPalette(withReadableSelection(QApplication::palette()));
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
