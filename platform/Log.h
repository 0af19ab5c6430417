#pragma once

#include <string>

namespace letterloft {

// The system's log. Owned by main; outlives everything that writes to it. Main thread only.
class Log {
public:
    virtual ~Log() = default;

    // One message, which may hold line breaks of its own. It is never read as a format. What it was filled in with has
    // been escaped already (storage/Text.h). A log that can't be written to is no failure of the caller.
    virtual void write(const std::string& message) = 0;
};

} // namespace letterloft
