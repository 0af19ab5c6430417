#pragma once

#include "platform/qt/QtX11Tray.h"

#include <QDBusConnection>
#include <QObject>
#include <QTimer>

#include <memory>

namespace letterloft {

// Tells whether this desktop has a status bar to show an item in. Qt settles on one protocol, for the life of the
// program, when QSystemTrayIcon is first touched (6.4); so nothing may touch it before isThere() has once been true.
class QtTrayHost final : public QObject {
    Q_OBJECT

public:
    enum class Protocol { undecided, bus, x11 };

    QtTrayHost();

    // Undecided until the first status bar was there; never changes after that.
    Protocol protocol() const { return protocol_; }

    // Whether it is not yet known if a status bar is there: none so far, and it has not been waited for long enough.
    bool isUndecided() const { return protocol_ == Protocol::undecided && grace_.isActive(); }

    // Whether a status bar of that protocol is there now.
    bool isThere() const;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void askWhetherHostIsRegistered();

private:
    void watchBus();
    void setBusHost(bool there);
    void watchX11();
    void x11TrayChanged();
    void decide(Protocol protocol);

    QDBusConnection bus_;
    Protocol protocol_ = Protocol::undecided;
    bool busHostIsThere_ = false;
    QTimer grace_;
    std::unique_ptr<QtX11Tray> x11Tray_;
};

} // namespace letterloft
