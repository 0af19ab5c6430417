#pragma once

#include <cstdlib>
#include <string>
#include <string_view>
#include <unistd.h>

namespace letterloft {

// Whether anything says where the session bus is: the variable, or the socket in the user's runtime folder. Where it
// does not, GLib and libdbus would start a bus of their own when asked for one ("autolaunch", dbus-launch(1)), which is
// as good as none. To be asked before every connection.
inline bool isSessionBusAnnounced() {
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address != nullptr && *address != '\0') return !std::string_view{address}.starts_with("autolaunch:");
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime != nullptr && *runtime == '/' && access((std::string{runtime} + "/bus").c_str(), F_OK) == 0;
}

} // namespace letterloft
