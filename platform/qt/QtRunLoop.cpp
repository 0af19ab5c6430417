#include "platform/qt/QtRunLoop.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>

namespace letterloft {

namespace {

// Sees whether any event is handled as long as it lives.
class EventWitness final : public QObject {
public:
    EventWitness() { QCoreApplication::instance()->installEventFilter(this); }

    bool hasSeenOne() const { return hasSeenOne_; }

private:
    bool eventFilter(QObject* /*watched*/, QEvent* /*event*/) override {
        hasSeenOne_ = true;
        return false;
    }

    bool hasSeenOne_ = false;
};

// An action that was itself set off by a posted event stands before those posted with it, and a wait inside it would
// not see them: Qt's GLib dispatcher (6.4) is woken only by what is posted from then on.
bool servePostedEvents() {
    const EventWitness witness;
    QCoreApplication::sendPostedEvents();
    return witness.hasSeenOne();
}

} // namespace

bool QtRunLoop::runModeBeforeDate(std::chrono::steady_clock::time_point instant) {
    using namespace std::chrono_literals;
    if (servePostedEvents()) return true;
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(instant - std::chrono::steady_clock::now());
    QTimer end; // wakes the wait when nothing else does
    end.setSingleShot(true);
    end.setTimerType(Qt::PreciseTimer);
    end.start(std::max(rest, 0ms));
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return true;
}

} // namespace letterloft
