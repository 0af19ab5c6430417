#pragma once

#include "platform/linux/SessionBusAddress.h"

#include <QDBusConnection>

namespace letterloft {

// Qt's connection to the session bus; one that is not connected where there is no bus. None is started.
inline QDBusConnection qtSessionBus() {
    return isSessionBusAnnounced() ? QDBusConnection::sessionBus() : QDBusConnection{QString{}};
}

} // namespace letterloft
