#pragma once

#include "platform/linux/ProgramFiles.h"

#include <optional>
#include <string>
#include <vector>

namespace letterloft {

// What a command line comes down to once general launchers are seen through. A value; read anew at each use.
struct StartedProgram {
    enum class Kind {
        executable,  // `file` itself
        script,      // `file`, run by `interpreter`
        shellText,   // `name`, run by `sh -c`
        appImage,    // `file`; what runs lies on a file system of its own while it does
        flatpak,     // the sandboxed application `name`
        snap,        // the snap `name`
        webApp,      // a browser with the option `name`
        commandLine, // `file`, an interpreter or virtual machine, with exactly `arguments`
    };

    Kind kind = Kind::executable;
    std::string file; // canonical
    std::optional<ProgramFileIdentity> identity;
    std::string interpreter;
    std::string name;
    std::vector<std::string> arguments; // as far as they can be told

    // Whether the two are the same program; `arguments` may still differ.
    bool isSameProgramAs(const StartedProgram& other) const;

    // A shell that starts the program, which follows in the list where it could be told.
    bool isWrapper() const { return kind == Kind::shellText || (kind == Kind::script && isShellScript); }
    bool isShellScript = false;
};

// Everything that may be running once `command` (program first) has been started, wrappers included. Empty for a
// program that is not there.
std::vector<StartedProgram> programsStartedBy(const std::vector<std::string>& command);

} // namespace letterloft
