#include "platform/linux/PrivateFolders.h"

#include "platform/linux/ChangedFolders.h"
#include "platform/linux/FileErrors.h"

#include <cerrno>
#include <vector>

namespace letterloft {

namespace {

Status createPrivateFolder(FileSystemCalls& calls, const std::string& path) {
    if (calls.mkdirat(AT_FDCWD, path.c_str(), 0700) != 0)
        return errno == EEXIST ? Status::ok() : systemFailure("the folder %@ can't be created", path);
    // The umask may have taken more than it should.
    if (calls.fchmodat(AT_FDCWD, path.c_str(), 0700) != 0) return systemFailure("%@ can't be made private", path);
    ChangedFolders changed{calls};
    changed.add(parentFolder(path));
    return changed.sync();
}

} // namespace

Status createPrivateFolders(FileSystemCalls& calls, const std::string& path) {
    std::vector<std::string> missing;
    struct statx info {};
    for (std::string folder = path; calls.statx(AT_FDCWD, folder.c_str(), 0, &info) != 0 && errno == ENOENT;
         folder = parentFolder(folder)) {
        missing.push_back(folder);
    }
    for (; !missing.empty(); missing.pop_back()) {
        if (Status made = createPrivateFolder(calls, missing.back()); !made) return made;
    }
    return Status::ok();
}

} // namespace letterloft
