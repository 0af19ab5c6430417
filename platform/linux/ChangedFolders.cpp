#include "platform/linux/ChangedFolders.h"

#include "platform/linux/FileErrors.h"

#include <cerrno>
#include <vector>

namespace letterloft {

std::string parentFolder(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

void ChangedFolders::addMove(const std::string& from, const std::string& to) {
    std::vector<std::string> moved;
    if (folders_.erase(from) != 0) moved.push_back(to);
    const std::string inside = from + "/";
    auto folder = folders_.lower_bound(inside);
    while (folder != folders_.end() && folder->starts_with(inside)) {
        moved.push_back(to + folder->substr(from.size()));
        folder = folders_.erase(folder);
    }
    folders_.insert(moved.begin(), moved.end());
    add(parentFolder(from));
    add(parentFolder(to));
}

Status ChangedFolders::sync() {
    Status first = Status::ok();
    for (auto folder = folders_.begin(); folder != folders_.end();) {
        Status synced = syncFolder(*folder);
        folder = synced ? folders_.erase(folder) : std::next(folder);
        if (first && !synced) first = std::move(synced);
    }
    return first;
}

Status ChangedFolders::syncFolder(const std::string& folder) {
    const OpenFile opened{calls_, calls_.openat(AT_FDCWD, folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0)};
    if (!opened && (errno == ENOENT || errno == ENOTDIR)) return Status::ok();
    if (!opened && errno == EACCES) {
        // It may be written to but not read, so it can't be synced alone.
        calls_.sync();
        return Status::ok();
    }
    if (!opened) return systemFailure("%@ can't be opened to be made durable", folder);
    // fsync(2): EINVAL and EROFS where a file system has nothing to sync.
    if (calls_.fsync(opened.get()) != 0 && errno != EINVAL && errno != EROFS)
        return systemFailure("%@ can't be made durable", folder);
    return Status::ok();
}

} // namespace letterloft
