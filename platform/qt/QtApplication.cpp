#include "platform/qt/QtApplication.h"

#include <QApplication>
#include <QEvent>
#include <QSessionManager>
#include <QWidget>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace letterloft {

namespace {

// A signal handler can reach nothing but what is static (signal-safety(7)).
int signalWriter = -1;

void tellOfSignal(int /*signal*/) {
    const int error = errno;
    const char byte = 0;
    // A full pipe has the news already.
    [[maybe_unused]] const ssize_t written = write(signalWriter, &byte, sizeof byte);
    errno = error;
}

void handle(int signal) {
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler == SIG_IGN) return; // as nohup(1) asks
    struct sigaction action = {};
    action.sa_handler = tellOfSignal;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

} // namespace

QtApplication::QtApplication(SettingsStore& settings, std::function<void()> lastDuties)
    : settings_{settings}, lastDuties_{std::move(lastDuties)} {
    watchSignals();
    QCoreApplication::instance()->installEventFilter(this);
    const auto prepareForLogOut = [this] {
        (void)settings_.synchronize();
        sessionIsToEnd_ = true;
    };
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, prepareForLogOut, Qt::DirectConnection);
}

void QtApplication::activateIgnoringOtherApps() {
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (!widget->isVisible() || widget->windowType() == Qt::Popup) continue;
        widget->raise();
        widget->activateWindow();
    }
}

void QtApplication::terminate() {
    (void)settings_.synchronize(); // a failure is logged by the store
    if (lastDuties_) lastDuties_();
    std::fflush(nullptr);
    std::_Exit(EXIT_SUCCESS);
}

void QtApplication::terminateIfAskedTo() {
    char byte = 0;
    if (recv(signals_, &byte, sizeof byte, MSG_DONTWAIT | MSG_PEEK) > 0) terminate();
    // "Quit" and the end of the session come as events, and terminate from there. One round may only read what the next
    // one serves. The posted ones by themselves: see QtRunLoop.cpp.
    sessionIsToEnd_ = false; // one that was told of before, and has not come, may have been called off
    constexpr int rounds = 3;
    for (int round = 0; round < rounds; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    // The session itself ends only when every program has answered, and nothing may be started until then.
    if (sessionIsToEnd_) terminate();
}

// The session manager's word that the session ends comes as this event.
bool QtApplication::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Quit && watched == QCoreApplication::instance()) terminate();
    return false;
}

void QtApplication::watchSignals() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) return;
    signals_ = ends[0];
    signalWriter = ends[1];
    signalCame_ = std::make_unique<QSocketNotifier>(signals_, QSocketNotifier::Read);
    connect(signalCame_.get(), &QSocketNotifier::activated, this, [this] { terminate(); });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        handle(signal);
}

} // namespace letterloft
