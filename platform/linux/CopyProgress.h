#pragma once

#include <cstdint>
#include <string>

namespace letterloft {

// Is told how a copy from one file system to another gets on. Called from inside the copy; takes no events in.
class CopyProgress {
public:
    virtual ~CopyProgress() = default;

    // A copy of the item, an absolute path, begins; afterwards it is ended in any case.
    virtual void began(const std::string& item, std::uint64_t totalBytes) = 0;

    // So many bytes in all have been copied so far.
    virtual void progressed(std::uint64_t bytes) = 0;

    virtual void ended() = 0;
};

} // namespace letterloft
