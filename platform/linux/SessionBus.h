#pragma once

#include "platform/Log.h"
#include "platform/Status.h"

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using GDBusConnection = struct _GDBusConnection;
using GVariant = struct _GVariant;

namespace letterloft {

// The D-Bus session bus. Owned by main; outlives what uses it. Main thread only: answers are waited for, none arrives
// by a callback. The connection is made at the first question. Without a session bus every answer is empty, which the
// log says once; none is ever started, and no question starts a program.
class SessionBus {
public:
    explicit SessionBus(Log& log);
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    bool isThere();

    // The process that owns the name, well-known or unique; none if nobody does.
    std::optional<pid_t> ownerPid(const std::string& name);

    // Every connection of these processes by its unique name, with the well-known names it owns.
    using Connections = std::map<std::string, std::vector<std::string>>;
    Connections connectionsOf(const std::vector<pid_t>& pids);

    // Whether the name is owned, or some service file says how to start its owner.
    bool isReachable(const std::string& name);

    // An application object of a running program, by a unique name.
    struct ApplicationObject {
        std::string uniqueName;
        std::string path;
        auto operator<=>(const ApplicationObject&) const = default;
    };

    // The path at which a GTK application of that id exports itself.
    static std::string objectPathForId(const std::string& applicationId);

    // The first of the objects that lists a "quit" action which can be used now. A program that does not answer has
    // none; all of them together are given a second.
    std::optional<ApplicationObject> objectOfferingQuit(const std::vector<ApplicationObject>& objects);

    // Sets the "quit" action off; the message is on its way when this returns, and no reply is waited for: the program
    // may ask its user first.
    void requestQuit(const ApplicationObject& object);

    // Asks the systemd user manager, where one runs, to put the process into a scope of its own, named as systemd's
    // "Desktop Environment Integration" says. Not waited for.
    void moveToOwnScope(pid_t pid, const std::string& applicationId);

    // Returns when everything that was sent has left this process.
    void flush();

private:
    GDBusConnection* connection();
    GVariant* callBus(const char* method, GVariant* arguments, const char* replyType);

    Log& log_;
    GDBusConnection* connection_ = nullptr;
    bool absenceLogged_ = false;
};

} // namespace letterloft
