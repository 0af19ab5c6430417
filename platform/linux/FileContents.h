#pragma once

#include "platform/linux/FileSystemCalls.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace letterloft {

// Copies the bytes of one file after another to other files.
class FileContents {
public:
    // `copied` is told the number of bytes after each stretch.
    FileContents(FileSystemCalls& calls, std::function<void(std::uint64_t bytes)> copied)
        : calls_{calls}, copied_{std::move(copied)}, buffer_(bufferSize) {}

    // Copies from both files' present places on: so many bytes, or as many as there are. -1 with errno on failure.
    int copy(int from, int to, std::uint64_t size);

    // The same for whole files from their beginnings; what is a hole in the one becomes one in the other.
    int copyWithHoles(int from, int to, std::uint64_t size);

private:
    static constexpr std::size_t bufferSize = 256 * 1024;

    bool copyInKernel(int from, int to, std::uint64_t& left);
    int writeAll(int to, std::size_t size);

    FileSystemCalls& calls_;
    std::function<void(std::uint64_t bytes)> copied_;
    std::vector<char> buffer_;
    bool kernelCopies_ = true;
};

} // namespace letterloft
