#include "platform/linux/FileAttributes.h"

#include "platform/linux/FileErrors.h"
#include "storage/Text.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <linux/limits.h>
#include <string_view>
#include <unistd.h>

namespace letterloft {

namespace {

// acl(5)'s names as attributes(7).
constexpr const char* accessList = "system.posix_acl_access";
constexpr const char* defaultList = "system.posix_acl_default";

bool isCopied(std::string_view name) { return name.starts_with("user.") || name == accessList || name == defaultList; }

std::array<timespec, 2> timesOf(const struct statx& info) {
    return {{{info.stx_atime.tv_sec, info.stx_atime.tv_nsec}, {info.stx_mtime.tv_sec, info.stx_mtime.tv_nsec}}};
}

} // namespace

FileAttributes::FileAttributes(Log& log, FileSystemCalls& calls, std::string item)
    : log_{log},
      calls_{calls},
      item_{std::move(item)},
      user_{geteuid()},
      group_{getegid()},
      names_(XATTR_LIST_MAX),
      value_(XATTR_SIZE_MAX) {}

bool FileAttributes::removeInherited(int copy) {
    calls_.fchownat(copy, "", static_cast<uid_t>(-1), group_, AT_EMPTY_PATH);
    const bool removed = calls_.fremovexattr(copy, defaultList) == 0 || errno == ENODATA || errno == EOPNOTSUPP;
    calls_.fremovexattr(copy, accessList);
    return calls_.fchmod(copy, S_IRWXU) == 0 && removed;
}

int FileAttributes::copy(int original, int copy, const struct statx& info, mode_t made) {
    const bool owned = setOwner(copy, "", AT_EMPTY_PATH, info);
    copyExtended(original, copy);
    const mode_t mode = modeFor(info, owned);
    if (mode != made && calls_.fchmod(copy, mode) != 0) {
        if (errno != EPERM) return -1;
        logLoss("mode", errno); // of our own file, so its file system knows only some
    }
    return calls_.utimensat(copy, nullptr, timesOf(info).data(), 0);
}

int FileAttributes::copyByName(int folder, const char* name, const struct statx& info) {
    const bool owned = setOwner(folder, name, AT_SYMLINK_NOFOLLOW, info);
    if (!S_ISLNK(info.stx_mode) && calls_.fchmodat(folder, name, modeFor(info, owned)) != 0) return -1;
    return calls_.utimensat(folder, name, timesOf(info).data(), AT_SYMLINK_NOFOLLOW);
}

// A program must not gain the rights of another user by being copied.
mode_t FileAttributes::modeFor(const struct statx& info, bool owned) const {
    return info.stx_mode & (owned ? 07777u : 01777u);
}

bool FileAttributes::setOwner(int folder, const char* name, int flags, const struct statx& info) {
    if (info.stx_uid == user_ && info.stx_gid == group_) return true;
    if (calls_.fchownat(folder, name, info.stx_uid, info.stx_gid, flags) == 0) return true;
    logLoss("owner", errno);
    // chown(2): a file may always be given to another of one's own groups.
    calls_.fchownat(folder, name, static_cast<uid_t>(-1), info.stx_gid, flags);
    return false;
}

void FileAttributes::copyExtended(int original, int copy) {
    const ssize_t size = calls_.flistxattr(original, names_.data(), names_.size());
    if (size < 0 && errno != EOPNOTSUPP) logLoss("attributes", errno);
    for (const char* name = names_.data(); name < names_.data() + size; name += std::strlen(name) + 1)
        if (isCopied(name)) copyExtended(original, copy, name);
}

void FileAttributes::copyExtended(int original, int copy, const char* name) {
    const ssize_t size = calls_.fgetxattr(original, name, value_.data(), value_.size());
    if (size < 0 || calls_.fsetxattr(copy, name, value_.data(), static_cast<std::size_t>(size)) != 0)
        logLoss(std::string{"attribute "} + name, errno);
}

void FileAttributes::logLoss(const std::string& what, int error) {
    if (!logged_.insert(what).second) return;
    log_.write(
        filledForLog("%@ could not keep this of its files in the move: %@: %@", {item_, what, systemReason(error)}));
}

} // namespace letterloft
