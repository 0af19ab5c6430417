#pragma once

#include "platform/Status.h"

#include <string>
#include <vector>

namespace letterloft {

// What stands at the path of an application: a desktop entry, a bundle folder ("….app") or an executable file (an
// AppImage too). Read anew at each use; a value without ties to the file it came from.
struct ApplicationEntry {
    enum class Kind { desktopEntry, bundle, executable };

    // Reads what is at `path` (absolute). Always tells kind, path and identifier, from the name alone when nothing is
    // there, since a program goes on running when its entry or its file has been removed; `usable` says then why
    // nothing can be started.
    static ApplicationEntry at(const std::string& path);

    Kind kind = Kind::executable;

    // Canonical (realpath(3)); as given, tidied, where that can't be told.
    std::string path;

    // The desktop file id without ".desktop"; the bundle's CFBundleIdentifier, else its path; the executable's path.
    std::string identifier;

    // Not ok: no application that could be started is here. The sentence names the path and what is wrong.
    Status usable = Status::ok();

    // What starts it, program first, as g_shell_parse_argv read it; field codes such as "%u" are left out. For a bundle
    // or an executable the one file to start, absolute. Told of a desktop entry that is not `usable` too, for what
    // still runs of it; empty when none can be told or the desktop entry starts by its bus name alone.
    std::vector<std::string> command;

    // Of a desktop entry; empty and false when it names none.
    std::string startupWMClass;
    bool dBusActivatable = false;
    bool noDisplay = false;

    // Whether the desktop entry at `desktopFile` is this one: the same file, or one of the same id in another
    // "applications" folder, as a user's own copy of a system's entry is (Desktop Entry Specification, "Desktop File
    // ID").
    bool isDesktopFile(const std::string& desktopFile) const;
};

} // namespace letterloft
