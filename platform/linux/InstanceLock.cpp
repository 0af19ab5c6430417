#include "platform/linux/InstanceLock.h"

#include "platform/linux/ChangedFolders.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/PrivateFolders.h"
#include "storage/Text.h"

#include <cerrno>
#include <sys/file.h>
#include <utility>

namespace letterloft {

namespace {

// A lock needs no right to write (flock(2)), but NFS, which makes it one of fcntl(2), does.
OpenFile openLockFile(FileSystemCalls& calls, const std::string& path) {
    constexpr int flags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    int file = calls.openat(AT_FDCWD, path.c_str(), flags | O_RDWR | O_CREAT, 0600);
    if (file >= 0) calls.fchmod(file, 0600); // the umask may have taken what the next start needs
    if (file < 0 && (errno == EACCES || errno == EROFS)) {
        const int error = errno;
        file = calls.openat(AT_FDCWD, path.c_str(), flags | O_RDONLY, 0);
        if (file < 0) errno = error;
    }
    return OpenFile{calls, file};
}

int lockWithoutWaiting(int file) {
    int result = 0;
    do {
        result = flock(file, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result;
}

std::string impossibleSentence(const std::string& path, const std::string& reason) {
    return filled("The lock that keeps Letterloft from running twice can't be taken at \"%@\": %@", {path, reason});
}

} // namespace

InstanceLock::InstanceLock(Outcome outcome, OpenFile file, std::string reason)
    : outcome_{outcome}, file_{std::move(file)}, reason_{std::move(reason)} {}

InstanceLock InstanceLock::take(FileSystemCalls& calls, const std::string& path) {
    const auto impossible = [&](const std::string& reason) {
        return InstanceLock{Outcome::impossible, {}, impossibleSentence(path, reason)};
    };
    if (Status created = createPrivateFolders(calls, parentFolder(path)); !created)
        return impossible(created.sentence());
    OpenFile file = openLockFile(calls, path);
    if (!file) return impossible(systemReason(errno));
    if (lockWithoutWaiting(file.get()) == 0) return {Outcome::taken, std::move(file), {}};
    if (errno == EWOULDBLOCK) return {Outcome::heldByAnother, {}, {}};
    return impossible(systemReason(errno));
}

} // namespace letterloft
