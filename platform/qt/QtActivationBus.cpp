#include "platform/qt/QtActivationBus.h"

#include "platform/qt/QtBusCaller.h"
#include "platform/qt/QtSessionBus.h"

#include <QDBusMessage>
#include <QDBusPendingCall>

#include <utility>

namespace letterloft {

namespace {

const auto busName = QLatin1String{"org.letterloft.Letterloft"};
const auto objectPath = QLatin1String{"/org/letterloft/Letterloft"};
const auto interfaceName = QLatin1String{"org.freedesktop.Application"};
constexpr int answerMilliseconds = 2000;

} // namespace

QtActivationBus::QtActivationBus(std::function<void()> activated) : activated_{std::move(activated)} {
    auto bus = qtSessionBus();
    if (!bus.isConnected() || !bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots)) return;
    // Not waited for: calls that come before the name is ours are for somebody else.
    auto request = QDBusMessage::createMethodCall(QLatin1String{"org.freedesktop.DBus"}, QLatin1String{"/"},
                                                  QLatin1String{"org.freedesktop.DBus"}, QLatin1String{"RequestName"});
    request << QString{busName} << 0x4U; // DBUS_NAME_FLAG_DO_NOT_QUEUE
    bus.asyncCall(request);
}

bool QtActivationBus::askRunningProgram() {
    auto request = QDBusMessage::createMethodCall(busName, objectPath, interfaceName, QLatin1String{"Activate"});
    request << QVariantMap{};
    request.setAutoStartService(false);
    const auto answer = qtSessionBus().call(request, QDBus::Block, answerMilliseconds);
    return answer.type() == QDBusMessage::ReplyMessage;
}

void QtActivationBus::Activate(const QVariantMap& /*platformData*/) { activate(); }

void QtActivationBus::Open(const QStringList& /*uris*/, const QVariantMap& /*platformData*/) { activate(); }

void QtActivationBus::ActivateAction(const QString& /*name*/, const QVariantList& /*parameters*/,
                                     const QVariantMap& /*platformData*/) {
    activate();
}

void QtActivationBus::activate() {
    if (isFromThisUser(connection(), message())) return activated_();
    sendErrorReply(QDBusError::AccessDenied, QStringLiteral("Letterloft shows itself to its own user only."));
}

} // namespace letterloft
