#include "platform/qt/QtTrayHost.h"

#include "platform/qt/QtSessionBus.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>

#include <chrono>
#include <utility>

namespace letterloft {

namespace {

// The names are those of the StatusNotifierItem specification as it is in use.
const auto watcherName = QLatin1String{"org.kde.StatusNotifierWatcher"};
const auto watcherPath = QLatin1String{"/StatusNotifierWatcher"};

// A panel that serves both protocols claims the X11 one first, a good deal earlier when the session is busy starting.
constexpr std::chrono::seconds busGrace{3};

} // namespace

QtTrayHost::QtTrayHost() : bus_{qtSessionBus()} {
    grace_.setSingleShot(true);
    grace_.setInterval(busGrace);
    connect(&grace_, &QTimer::timeout, this, [this] { watchX11(); });
    if (bus_.isConnected()) {
        watchBus();
    } else {
        grace_.setInterval(0);
    }
    grace_.start();
}

bool QtTrayHost::isThere() const {
    if (protocol_ == Protocol::bus) return busHostIsThere_;
    return protocol_ == Protocol::x11 && x11Tray_->isThere();
}

void QtTrayHost::watchBus() {
    auto* const watcher = new QDBusServiceWatcher{watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange, this};
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &QtTrayHost::askWhetherHostIsRegistered);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { setBusHost(false); });
    for (const char* const name : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus_.connect(watcherName, watcherPath, watcherName, QLatin1String{name}, this,
                     SLOT(askWhetherHostIsRegistered()));
    }
    askWhetherHostIsRegistered();
}

void QtTrayHost::askWhetherHostIsRegistered() {
    auto question = QDBusMessage::createMethodCall(
        watcherName, watcherPath, QLatin1String{"org.freedesktop.DBus.Properties"}, QLatin1String{"Get"});
    question << QString{watcherName} << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* const answer = new QDBusPendingCallWatcher{bus_.asyncCall(question), this};
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        setBusHost(reply.isValid() && reply.value().variant().toBool());
    });
}

void QtTrayHost::setBusHost(bool there) {
    if (std::exchange(busHostIsThere_, there) == there) return;
    if (there && protocol_ == Protocol::undecided) return decide(Protocol::bus);
    if (protocol_ == Protocol::bus) Q_EMIT changed();
}

void QtTrayHost::watchX11() {
    if (protocol_ != Protocol::undecided || QGuiApplication::platformName() != QLatin1String{"xcb"}) return;
    if (!x11Tray_) {
        x11Tray_ = std::make_unique<QtX11Tray>([this] { x11TrayChanged(); });
    }
    if (x11Tray_->isThere()) decide(Protocol::x11);
}

void QtTrayHost::x11TrayChanged() {
    if (protocol_ == Protocol::x11) {
        Q_EMIT changed();
    } else {
        grace_.start();
    }
}

void QtTrayHost::decide(Protocol protocol) {
    protocol_ = protocol;
    grace_.stop();
    if (protocol == Protocol::bus) x11Tray_.reset();
    Q_EMIT changed();
}

} // namespace letterloft
