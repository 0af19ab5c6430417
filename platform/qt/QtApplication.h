#pragma once

#include "platform/Application.h"
#include "platform/SettingsStore.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace letterloft {

// This program in its session. Its end is asked for by terminate(), by SIGTERM, SIGINT and SIGHUP, and by the log-out,
// and takes place at once, from wherever the program is: going back through nested event loops would let a switch go
// on, and Qt would answer open sheets. Made after the QApplication, once.
class QtApplication final : public QObject, public Application {
public:
    // `lastDuties` runs before each end, the settings being saved by then.
    QtApplication(SettingsStore& settings, std::function<void()> lastDuties);

    void activateIgnoringOtherApps() override;
    void terminate() override;
    void terminateIfAskedTo() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watchSignals();

    SettingsStore& settings_;
    std::function<void()> lastDuties_;
    bool sessionIsToEnd_ = false;
    int signals_ = -1;
    std::unique_ptr<QSocketNotifier> signalCame_;
};

} // namespace letterloft
