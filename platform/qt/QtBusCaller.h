#pragma once

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

namespace letterloft {

// Whether a call comes from a program of this user. The bus tells, for both in the same way, so that it does not matter
// how users are numbered where the bus runs. A caller that has left the bus is nobody.
inline bool isFromThisUser(const QDBusConnection& bus, const QDBusMessage& call) {
    const QDBusConnectionInterface* const names = bus.interface();
    if (!names) return false;
    const QDBusReply<uint> caller = names->serviceUid(call.service());
    const QDBusReply<uint> own = names->serviceUid(bus.baseService());
    return caller.isValid() && own.isValid() && caller.value() == own.value();
}

} // namespace letterloft
