#pragma once

#include "platform/linux/FileSystemCalls.h"

#include <string>

namespace letterloft {

// One running program per home: flock(2) on a file that is never removed. Held until this object goes, or the process
// ends in whatever way; programs that are launched don't inherit it.
class InstanceLock final {
public:
    enum class Outcome { taken, heldByAnother, impossible };

    // Creates the file at `path` (absolute) where it is missing, and the folders above it with mode 0700. A link at
    // that name is not followed.
    static InstanceLock take(FileSystemCalls& calls, const std::string& path);

    Outcome outcome() const { return outcome_; }

    // Why it is impossible: a sentence with the path and the system's reason, not yet escaped.
    const std::string& reason() const { return reason_; }

private:
    InstanceLock(Outcome outcome, OpenFile file, std::string reason);

    Outcome outcome_;
    OpenFile file_;
    std::string reason_;
};

} // namespace letterloft
