#pragma once

#include "platform/linux/FileSystemCalls.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <new>

namespace letterloft {

// Copies the bytes of one file after another to other files.
class FileContents {
public:
    // `copied` is told the number of bytes after each stretch.
    FileContents(FileSystemCalls& calls, std::function<void(std::uint64_t bytes)> copied)
        : calls_{calls}, copied_{std::move(copied)}, buffer_{new (pageSize) char[bufferSize]} {}

    // Copies so many bytes from both files' present places on. -1 with errno on failure, which is ENODATA if there are
    // not so many.
    int copy(int from, int to, std::uint64_t size);

    // The same for whole files from their beginnings; what is a hole in the one becomes one in the other.
    int copyWithHoles(int from, int to, std::uint64_t size);

private:
    // The kernel copies to and from whole pages twice as fast.
    static constexpr std::align_val_t pageSize{4096};
    static constexpr std::size_t bufferSize = 256 * 1024;

    struct Release {
        void operator()(char* buffer) const { operator delete[](buffer, pageSize); }
    };

    // How the kernel copies from one file to another without this program's buffer; what it can't do is asked once.
    enum class KernelWay { sharing, sending, none };

    bool copyInKernel(int from, int to, std::uint64_t& left);
    ssize_t copyStretch(int from, int to, std::size_t size);
    int writeAll(int to, std::size_t size);

    FileSystemCalls& calls_;
    std::function<void(std::uint64_t bytes)> copied_;
    std::unique_ptr<char[], Release> buffer_;
    KernelWay kernelWay_ = KernelWay::sharing;
};

} // namespace letterloft
