#include "platform/linux/ProtectedPaths.h"

#include <algorithm>
#include <array>
#include <climits>

namespace letterloft {

namespace {

// The first component of `rest`, which is shortened by it and the slashes around it.
std::string takeComponent(std::string& rest) {
    const std::size_t begin = std::min(rest.find_first_not_of('/'), rest.size());
    const std::size_t end = std::min(rest.find('/', begin), rest.size());
    std::string component = rest.substr(begin, end - begin);
    rest.erase(0, end);
    return component;
}

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

} // namespace

bool ProtectedPaths::include(const FileIdentity& file) {
    if (!looked_) {
        identities_.clear();
        for (const std::string& path : paths_)
            follow(path);
        looked_ = true;
    }
    return std::find(identities_.begin(), identities_.end(), file) != identities_.end();
}

void ProtectedPaths::follow(const std::string& path) {
    OpenFile folder{calls_, calls_.openat(AT_FDCWD, "/", folderFlags, 0)};
    std::string rest = path;
    constexpr int mostSteps = 4 * PATH_MAX; // links may lead round in a ring
    for (int step = 0; folder && step < mostSteps; ++step) {
        const std::string name = takeComponent(rest);
        struct statx info {};
        if (name.empty() || calls_.statx(folder.get(), name.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0) return;
        identities_.emplace_back(info);
        if (!S_ISLNK(info.stx_mode)) {
            folder = OpenFile{calls_, calls_.openat(folder.get(), name.c_str(), folderFlags | O_NOFOLLOW, 0)};
        } else {
            if (!followLink(folder.get(), name, rest)) return;
            if (rest.front() == '/') folder = OpenFile{calls_, calls_.openat(AT_FDCWD, "/", folderFlags, 0)};
        }
    }
}

bool ProtectedPaths::followLink(int folder, const std::string& name, std::string& rest) {
    std::array<char, PATH_MAX> text; // NOLINT(cppcoreguidelines-pro-type-member-init)
    const ssize_t size = calls_.readlinkat(folder, name.c_str(), text.data(), text.size());
    if (size <= 0) return false;
    rest.insert(0, std::string(text.data(), static_cast<std::size_t>(size)) + "/");
    return true;
}

} // namespace letterloft
