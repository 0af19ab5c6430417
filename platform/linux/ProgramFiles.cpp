#include "platform/linux/ProgramFiles.h"

#include "platform/linux/GlibPointers.h"
#include "storage/SupportFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace letterloft {

namespace {

std::optional<struct stat> statusOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return status;
}

std::optional<std::string> bytesOf(int descriptor, std::size_t limit) {
    std::string bytes;
    std::array<char, 16384> part{};
    while (bytes.size() < limit) {
        const ssize_t got = ::read(descriptor, part.data(), std::min(part.size(), limit - bytes.size()));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        bytes.append(part.data(), static_cast<std::size_t>(got));
    }
    return bytes;
}

} // namespace

std::optional<ProgramFileIdentity> identityOfFile(const std::string& path) {
    const auto status = statusOf(path);
    if (!status) return std::nullopt;
    return ProgramFileIdentity{status->st_dev, status->st_ino};
}

std::optional<std::string> canonicalPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> found{::realpath(path.c_str(), nullptr), &std::free};
    if (!found) return std::nullopt;
    return std::string{found.get()};
}

std::string canonicalPathOfMissing(const std::string& path) {
    if (const auto whole = canonicalPath(path)) return *whole;
    const auto slash = path.rfind('/');
    if (slash == std::string::npos || slash + 1 == path.size()) return path;
    const auto folder = canonicalPath(path.substr(0, slash + 1));
    return folder ? joined(*folder, path.substr(slash + 1)) : path;
}

bool isSomething(const std::string& path) { return statusOf(path).has_value(); }

bool isFolder(const std::string& path) {
    const auto status = statusOf(path);
    return status && S_ISDIR(status->st_mode);
}

bool isProgram(const std::string& path) {
    const auto status = statusOf(path);
    return status && S_ISREG(status->st_mode) && ::access(path.c_str(), X_OK) == 0;
}

std::optional<std::string> programInPath(const std::string& name) {
    if (name.empty()) return std::nullopt;
    const GlibPointer<gchar> found{g_find_program_in_path(name.c_str())};
    if (!found || found.get()[0] != '/') return std::nullopt;
    return std::string{found.get()};
}

std::optional<std::string> contentsOfSmallFile(const std::string& path, std::size_t limit) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return std::nullopt;
    struct stat status {};
    std::optional<std::string> bytes;
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) bytes = bytesOf(descriptor, limit + 1);
    ::close(descriptor);
    if (bytes && bytes->size() > limit) return std::nullopt;
    return bytes;
}

std::optional<std::string> headOfFile(const std::string& path, std::size_t limit) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return std::nullopt;
    auto bytes = bytesOf(descriptor, limit);
    ::close(descriptor);
    return bytes;
}

} // namespace letterloft
