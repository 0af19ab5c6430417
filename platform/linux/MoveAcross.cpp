#include "platform/linux/MoveAcross.h"

#include "platform/linux/ChangedFolders.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/RenameNoReplace.h"
#include "platform/linux/SourceRemoval.h"
#include "platform/linux/TreeRemoval.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <cerrno>

namespace letterloft {

namespace {

OpenFile openFolder(FileSystemCalls& calls, const std::string& path) {
    return OpenFile{calls, calls.openat(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0)};
}

} // namespace

MoveAcross::MoveAcross(Log& log, FileSystemCalls& calls, CopyProgress& progress, std::string from, std::string to)
    : log_{log},
      calls_{calls},
      progress_{progress},
      from_{std::move(from)},
      to_{std::move(to)},
      mark_{MoveMark::fresh()} {}

Status MoveAcross::run() {
    CopiedItems items;
    if (Status opened = open(); !opened) return opened;
    if (Status listed = listTree(calls_, source_, items); !listed) return listed;
    if (Status roomy = checkRoom(items); !roomy) return roomy;
    if (Status noted = writeNote(); !noted) return noted;
    progress_.began(from_, items.bytes());
    Status moved = TreeCopy{log_, calls_, progress_, items}.run(source_, staging_);
    if (moved) moved = makeDurable(); // what the system has only taken in so far may take it longer than the copy
    if (moved) moved = publish();
    progress_.ended();
    if (!moved) {
        retract();
        return moved;
    }
    NotedWitness witness{items};
    SourceRemoval{log_, calls_, source_, mark_, to_}.setAsideAndRemove(witness);
    return Status::ok();
}

Status MoveAcross::open() {
    const std::string sourceFolder = parentFolder(from_);
    const std::string targetFolder = parentFolder(to_);
    sourceFolder_ = openFolder(calls_, sourceFolder);
    if (!sourceFolder_) return systemFailure("the folder %@ can't be opened", sourceFolder);
    targetFolder_ = openFolder(calls_, targetFolder);
    if (!targetFolder_) return systemFailure("the folder %@ can't be opened", targetFolder);
    source_ = {sourceFolder_.get(), sourceFolder, lastComponent(from_)};
    staging_ = {targetFolder_.get(), targetFolder, mark_.name(MoveMark::Kind::staging)};
    targetName_ = lastComponent(to_);
    struct statx info {};
    if (calls_.statx(staging_.folder, targetName_.c_str(), AT_SYMLINK_NOFOLLOW, &info) == 0)
        return Status::failure("something is at the second path already: " + systemReason(EEXIST));
    return errno == ENOENT ? Status::ok() : systemFailure("%@ can't be looked at", to_);
}

Status MoveAcross::checkRoom(const CopiedItems& items) const {
    struct statvfs target {};
    struct statvfs source {};
    if (calls_.fstatvfs(staging_.folder, &target) != 0)
        return systemFailure("the room in %@ can't be told", staging_.folderPath);
    // Two parts of one file system may share the blocks.
    if (calls_.fstatvfs(source_.folder, &source) == 0 && source.f_fsid == target.f_fsid && source.f_fsid != 0)
        return Status::ok();
    const bool tellsSize = target.f_frsize != 0 && target.f_blocks != 0; // some file systems tell none
    if (tellsSize && items.bytes() / target.f_frsize > target.f_bavail)
        return Status::failure(filled(
            "it holds %@ bytes, and the file system of %@ has room for %@ only",
            {std::to_string(items.bytes()), staging_.folderPath, std::to_string(target.f_bavail * target.f_frsize)}));
    // Some file systems have no fixed number of files and tell none.
    if (target.f_files != 0 && items.count() > target.f_favail)
        return Status::failure(
            filled("it holds %@ files and folders, and the file system of %@ has room for %@ only",
                   {std::to_string(items.count()), staging_.folderPath, std::to_string(target.f_favail)}));
    return Status::ok();
}

// A folder that takes no note would not let the source go later. Some file systems have no links: then a crash at the
// worst moment leaves the item at both places.
Status MoveAcross::writeNote() {
    const std::string text = MoveNote{source_.name, to_}.text();
    const std::string name = mark_.name(MoveMark::Kind::note);
    if (calls_.symlinkat(text.c_str(), source_.folder, name.c_str()) == 0) return Status::ok();
    if (errno == EPERM || errno == EOPNOTSUPP || errno == ENAMETOOLONG) return Status::ok();
    return systemFailure("the folder %@ can't be changed", source_.folderPath);
}

// One sync of the whole file system costs a fraction of one for each file. One that fails is not tried again: the
// system forgets what it could not write.
Status MoveAcross::makeDurable() {
    if (calls_.syncfs(staging_.folder) != 0)
        return systemFailure("the copy in %@ can't be made durable", staging_.folderPath);
    if (calls_.fsync(source_.folder) != 0) return systemFailure("%@ can't be made durable", source_.folderPath);
    return Status::ok();
}

Status MoveAcross::publish() {
    const char* staging = staging_.name.c_str();
    const char* target = targetName_.c_str();
    if (renameNoReplace(calls_, staging_.folder, staging, staging_.folder, target) != 0)
        return errno == EEXIST ? Status::failure("something has come to the second path: " + systemReason(EEXIST))
                               : systemFailure("%@ can't be given its name", to_);
    if (calls_.fsync(staging_.folder) == 0) return Status::ok();
    Status failed = systemFailure("%@ can't be made durable", staging_.folderPath);
    if (renameNoReplace(calls_, staging_.folder, target, staging_.folder, staging) != 0)
        return Status::failure(failed.sentence() + "; a whole copy stays at the second path");
    return failed;
}

// The note goes first: without it a staging tree is rubbish for certain.
void MoveAcross::retract() {
    calls_.unlinkat(source_.folder, mark_.name(MoveMark::Kind::note).c_str(), 0);
    struct statx info {};
    if (calls_.statx(staging_.folder, staging_.name.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0 && errno == ENOENT)
        return;
    const Status removed =
        removeTree(calls_, staging_.folder, staging_.folderPath, staging_.name, ReadOnlyFolders::madeWritable);
    if (!removed) log_.write(filledForLog("What had been copied of %@ stays behind: %@", {from_, removed.sentence()}));
}

} // namespace letterloft
