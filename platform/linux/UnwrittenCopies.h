#pragma once

#include "platform/linux/FileSystemCalls.h"

#include <cstdint>
#include <vector>

namespace letterloft {

// Copies that are complete, but in memory only. The disk is set to work on a number of them at a time while the next
// are being copied: so less is left to wait for at the end. Set to work on each by itself it takes several times
// longer. Large ones are left to the end, since a disk that is given more than it can queue holds the caller up.
class UnwrittenCopies {
public:
    explicit UnwrittenCopies(FileSystemCalls& calls) : calls_{calls} {}

    // Takes one over, of `size` bytes; sooner or later it is closed. -1 with errno when one can't be written or closed.
    int add(OpenFile copy, std::uint64_t size);

    // Closes all that are left; whether they are durable only syncfs(2) can tell.
    int closeAll();

private:
    static constexpr std::size_t limit = 32;
    static constexpr std::uint64_t largest = 1024 * 1024;

    int startWriting(int file);

    FileSystemCalls& calls_;
    std::vector<OpenFile> copies_;
};

} // namespace letterloft
