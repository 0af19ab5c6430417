#include "platform/linux/FileContents.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace letterloft {

int FileContents::copy(int from, int to, std::uint64_t size) {
    std::uint64_t left = size;
    if (copyInKernel(from, to, left)) return 0;
    while (left > 0) {
        const ssize_t got = calls_.read(from, buffer_.get(), std::min<std::uint64_t>(left, bufferSize));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0 || (got > 0 && writeAll(to, static_cast<std::size_t>(got)) != 0)) return -1;
        if (got == 0) {
            errno = ENODATA;
            return -1;
        }
        left -= static_cast<std::uint64_t>(got);
        copied_(static_cast<std::uint64_t>(got));
    }
    return 0;
}

// Whether all of it could be copied without passing through this program. Any failure, a real one too, is left to the
// next way to meet again.
bool FileContents::copyInKernel(int from, int to, std::uint64_t& left) {
    constexpr std::uint64_t stretch = 8 * 1024 * 1024;
    while (left > 0 && kernelWay_ != KernelWay::none) {
        const ssize_t got = copyStretch(from, to, std::min(left, stretch));
        if (got < 0 && errno == EINTR) continue;
        if (got == 0) return false;
        if (got < 0) {
            kernelWay_ = kernelWay_ == KernelWay::sharing ? KernelWay::sending : KernelWay::none;
            continue;
        }
        left -= static_cast<std::uint64_t>(got);
        copied_(static_cast<std::uint64_t>(got));
    }
    return left == 0;
}

// copy_file_range(2) shares the blocks where the file systems can, but mostly refuses to go from one kind of them to
// another. sendfile(2) does that, and saves the way through the buffer: a sixth of the time that small files take.
ssize_t FileContents::copyStretch(int from, int to, std::size_t size) {
    return kernelWay_ == KernelWay::sharing ? calls_.copy_file_range(from, to, size) : calls_.sendfile(to, from, size);
}

int FileContents::writeAll(int to, std::size_t size) {
    for (std::size_t written = 0; written < size;) {
        const ssize_t got = calls_.write(to, buffer_.get() + written, size - written);
        if (got < 0 && errno == EINTR) continue;
        if (got == 0) errno = EIO;
        if (got <= 0) return -1;
        written += static_cast<std::size_t>(got);
    }
    return 0;
}

int FileContents::copyWithHoles(int from, int to, std::uint64_t size) {
    const auto end = static_cast<off_t>(size);
    for (off_t at = 0; at < end;) {
        const off_t data = calls_.lseek(from, at, SEEK_DATA);
        if (data >= end || (data < 0 && errno == ENXIO)) break; // a hole up to the end, behind which more may have come
        const off_t hole = data < 0 ? -1 : calls_.lseek(from, data, SEEK_HOLE);
        if (hole < 0 || calls_.lseek(from, data, SEEK_SET) < 0 || calls_.lseek(to, data, SEEK_SET) < 0) return -1;
        if (copy(from, to, static_cast<std::uint64_t>(std::min(hole, end) - data)) != 0) return -1;
        at = hole;
    }
    return calls_.ftruncate(to, end);
}

} // namespace letterloft
