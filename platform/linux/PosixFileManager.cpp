#include "platform/linux/PosixFileManager.h"

#include "platform/linux/FileErrors.h"
#include "platform/linux/InterruptedMoves.h"
#include "platform/linux/MoveAcross.h"
#include "platform/linux/RenameNoReplace.h"
#include "platform/linux/TreeRemoval.h"
#include "platform/linux/TreeWalk.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <cerrno>
#include <optional>
#include <utility>

namespace letterloft {

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

// Trailing slashes would make the system follow a link at the end; doubled ones would tell two spellings apart.
std::string tidied(const std::string& path) { return path.empty() ? path : joined(path, ""); }

// What is no path must not reach the system: it would take the bytes before a NUL, or look in the working folder.
const char* reasonAgainstPath(const std::string& path) {
    if (path.empty() || path.front() != '/') return "it is no absolute path";
    return path.find('\0') == std::string::npos ? nullptr : "no path can hold a NUL";
}

Status checkedPath(const std::string& path) {
    const char* reason = reasonAgainstPath(path);
    return reason ? Status::failure(filled("\"%@\" can't be used: %@", {path, reason})) : Status::ok();
}

} // namespace

PosixFileManager::PosixFileManager(const Parts& parts, std::string home, std::vector<std::string> protectedPaths)
    : parts_{parts},
      home_{std::move(home)},
      changedFolders_{parts.calls},
      protectedPaths_{parts.calls, std::move(protectedPaths)} {}

bool PosixFileManager::fileExists(const std::string& path) const { return existsWithMode(path, 0); }

bool PosixFileManager::folderExists(const std::string& path) const { return existsWithMode(path, S_IFDIR); }

// Whether something of that type, or of any with 0, stands at the path or at the end of its links.
bool PosixFileManager::existsWithMode(const std::string& path, mode_t type) const {
    if (reasonAgainstPath(path)) return false;
    struct statx info {};
    if (parts_.calls.statx(AT_FDCWD, tidied(path).c_str(), 0, &info) == 0)
        return type == 0 || (info.stx_mode & S_IFMT) == type;
    if (errno == ENOENT || errno == ENOTDIR) return false;
    parts_.log.write(
        filledForLog("%@ can't be looked at, so something is taken to be there: %@", {path, systemReason(errno)}));
    return true;
}

Status PosixFileManager::createFolder(const std::string& path) {
    if (Status checked = checkedPath(path); !checked) return checked;
    const std::string whole = tidied(path);
    std::vector<std::string> missing{whole};
    struct statx info {};
    while (missing.back() != "/" && parts_.calls.statx(AT_FDCWD, missing.back().c_str(), 0, &info) != 0) {
        if (errno != ENOENT) return systemFailure("The folder %@ can't be made", whole);
        missing.push_back(parentFolder(missing.back()));
    }
    for (; !missing.empty(); missing.pop_back())
        if (Status made = makeFolder(missing.back()); !made) return made;
    return Status::ok();
}

Status PosixFileManager::makeFolder(const std::string& path) {
    if (parts_.calls.mkdirat(AT_FDCWD, path.c_str(), S_IRWXU) != 0) {
        const int error = errno;
        struct statx info {};
        if (error == EEXIST && parts_.calls.statx(AT_FDCWD, path.c_str(), 0, &info) == 0 && isFolder(info))
            return Status::ok();
        if (error == EEXIST) return failure("The folder %@ can't be made: something that is no folder is there", path);
        return systemFailure("The folder %@ can't be made", path, error);
    }
    changedFolders_.add(parentFolder(path));
    protectedPaths_.look();
    // The umask and the parent's default ACL and group bit have had their say in mkdir(2).
    if (parts_.calls.fchmodat(AT_FDCWD, path.c_str(), S_IRWXU) != 0)
        return systemFailure("The folder %@ can't be kept for its owner", path);
    return Status::ok();
}

Result<std::vector<std::string>> PosixFileManager::contentsOfFolder(const std::string& path) const {
    if (Status checked = checkedPath(path); !checked) return checked;
    const OpenFile folder{parts_.calls, parts_.calls.openat(AT_FDCWD, path.c_str(), folderFlags, 0)};
    if (!folder) return systemFailure("The folder %@ can't be listed", path);
    std::vector<std::string> names;
    FolderListing listing{parts_.calls};
    for (;;) {
        TreeEntry entry{};
        switch (listing.next(folder.get(), entry)) {
        case FolderListing::Next::entry:
            names.emplace_back(entry.name);
            break;
        case FolderListing::Next::end:
            return names;
        case FolderListing::Next::failed:
            return systemFailure("The folder %@ can't be listed to its end", path);
        }
    }
}

Status PosixFileManager::moveItem(const std::string& fromPath, const std::string& toPath) {
    for (const std::string& path : {fromPath, toPath})
        if (const char* reason = reasonAgainstPath(path)) return moveFailure(fromPath, toPath, reason);
    const std::string from = tidied(fromPath);
    const std::string to = tidied(toPath);
    if (Status refused = refusalToMove(from, to); !refused) return refused;
    if (renameNoReplace(parts_.calls, AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str()) == 0) {
        changedFolders_.addMove(from, to);
        return Status::ok();
    }
    if (errno != EXDEV) return moveFailure(from, to, reasonAgainstMove(from, to, errno));
    Status moved = MoveAcross{parts_.log, parts_.calls, parts_.progress, from, to}.run();
    if (moved) {
        changedFolders_.addMove(from, to);
        return moved;
    }
    // The marks have come and gone.
    changedFolders_.add(parentFolder(from));
    changedFolders_.add(parentFolder(to));
    return moveFailure(from, to, moved.sentence());
}

Status PosixFileManager::refusalToMove(const std::string& from, const std::string& to) {
    struct statx source {};
    if (parts_.calls.statx(AT_FDCWD, from.c_str(), AT_SYMLINK_NOFOLLOW, &source) != 0)
        return moveFailure(from, to,
                           errno == ENOENT ? "there is nothing to move: " + systemReason(errno) : systemReason(errno));
    if (protectedPaths_.include(FileIdentity{source}))
        return moveFailure(from, to, "Letterloft's own settings, lock or support folder are there");
    return Status::ok();
}

std::string PosixFileManager::reasonAgainstMove(const std::string& from, const std::string& to, int error) const {
    struct statx info {};
    std::string reason = systemReason(error);
    if (error == EEXIST) return "something is at the second path already: " + reason;
    if (error == ENOENT && parts_.calls.statx(AT_FDCWD, parentFolder(to).c_str(), 0, &info) != 0)
        return "the folder " + parentFolder(to) + " is missing: " + reason;
    if (error == EBUSY) return "the first path is a mount point or in use: " + reason;
    if (error == EINVAL && parts_.calls.statx(AT_FDCWD, from.c_str(), AT_SYMLINK_NOFOLLOW, &info) == 0 &&
        isInside(to, FileIdentity{info}))
        return "the second path lies inside the first: " + reason;
    return reason;
}

// Whether the path leads through that folder, whatever it is called there.
bool PosixFileManager::isInside(const std::string& path, const FileIdentity& folder) const {
    constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    OpenFile above{parts_.calls, parts_.calls.openat(AT_FDCWD, parentFolder(path).c_str(), flags, 0)};
    for (std::optional<FileIdentity> below; above;) {
        struct statx info {};
        if (parts_.calls.statx(above.get(), "", AT_EMPTY_PATH, &info) != 0) return false;
        const FileIdentity here{info};
        if (here == folder) return true;
        if (below == here) return false; // the root is its own parent
        below = here;
        above = OpenFile{parts_.calls, parts_.calls.openat(above.get(), "..", flags, 0)};
    }
    return false;
}

Status PosixFileManager::removeItem(const std::string& path) {
    if (Status checked = checkedPath(path); !checked) return checked;
    const std::string whole = tidied(path);
    struct statx info {};
    struct statx home {};
    const std::string name = lastComponent(whole);
    if (name.empty() || name == "/" || name == "." || name == "..") return failure("\"%@\" is never removed", path);
    const OpenFile parent{
        parts_.calls, parts_.calls.openat(AT_FDCWD, parentFolder(whole).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC, 0)};
    if (!parent || parts_.calls.statx(parent.get(), name.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0)
        return systemFailure("%@ can't be removed", whole);
    if (parts_.calls.statx(AT_FDCWD, home_.c_str(), 0, &home) == 0 && FileIdentity{home} == FileIdentity{info})
        return failure("%@ is the home folder and is never removed", whole);
    protectedPaths_.look();
    changedFolders_.add(parentFolder(whole));
    return removeTree(parts_.calls, parent.get(), parentFolder(whole), name, ReadOnlyFolders::respected);
}

Status PosixFileManager::makeMovesDurable() {
    protectedPaths_.look();
    return changedFolders_.sync();
}

void PosixFileManager::settle(const std::vector<std::string>& folders) {
    InterruptedMoves{parts_.log, parts_.calls}.settle(folders);
}

} // namespace letterloft
