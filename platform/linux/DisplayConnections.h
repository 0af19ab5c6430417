#pragma once

#include <sys/types.h>

namespace letterloft {

// Which displays a process shows itself on, as far as the kernel tells: by the sockets it holds, not by its windows.
struct DisplayConnections {
    // What can't be told counts as connected, so that nobody is ended who may have something on the screen.
    bool x11 = true;
    bool wayland = true;

    static DisplayConnections ofProcess(pid_t pid);
};

} // namespace letterloft
