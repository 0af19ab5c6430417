#include "platform/linux/RenameNoReplace.h"

#include <cerrno>
#include <cstdio>

namespace letterloft {

namespace {

// Of a file's two names; should it stay, the second one goes again.
int removeFirstName(FileSystemCalls& calls, int fromFolder, const char* from, int toFolder, const char* to) {
    if (calls.unlinkat(fromFolder, from, 0) == 0 || errno == ENOENT) return 0;
    const int error = errno;
    calls.unlinkat(toFolder, to, 0);
    errno = error;
    return -1;
}

int renameByHand(FileSystemCalls& calls, int fromFolder, const char* from, int toFolder, const char* to) {
    struct statx info {};
    if (calls.statx(fromFolder, from, AT_SYMLINK_NOFOLLOW, &info) != 0) return -1;
    if (!isFolder(info)) {
        if (calls.linkat(fromFolder, from, toFolder, to) == 0)
            return removeFirstName(calls, fromFolder, from, toFolder, to);
        // link(2): some file systems know no second names.
        if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS) return -1;
    }
    if (calls.statx(toFolder, to, AT_SYMLINK_NOFOLLOW, &info) == 0) {
        errno = EEXIST;
        return -1;
    }
    return errno == ENOENT ? calls.renameat2(fromFolder, from, toFolder, to, 0) : -1;
}

} // namespace

int renameNoReplace(FileSystemCalls& calls, int fromFolder, const char* from, int toFolder, const char* to) {
    if (calls.renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE) == 0) return 0;
    // EINVAL tells of a flag that the file system does not know, or of a folder that would go into itself.
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) return -1;
    return renameByHand(calls, fromFolder, from, toFolder, to);
}

} // namespace letterloft
