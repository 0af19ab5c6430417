#include "platform/qt/QtRunLoop.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>

namespace letterloft {

bool QtRunLoop::runModeBeforeDate(std::chrono::steady_clock::time_point instant) {
    using namespace std::chrono_literals;
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(instant - std::chrono::steady_clock::now());
    QTimer end; // wakes the wait when nothing else does
    end.setSingleShot(true);
    end.setTimerType(Qt::PreciseTimer);
    end.start(std::max(rest, 0ms));
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return true;
}

} // namespace letterloft
