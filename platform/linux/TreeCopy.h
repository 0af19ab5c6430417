#pragma once

#include "platform/Log.h"
#include "platform/Status.h"
#include "platform/linux/CopiedItems.h"
#include "platform/linux/CopyProgress.h"
#include "platform/linux/FileAttributes.h"
#include "platform/linux/FileContents.h"
#include "platform/linux/TreeWalk.h"
#include "platform/linux/UnwrittenCopies.h"

#include <string>

namespace letterloft {

// A place for an item: its folder, open and by path, and its name there.
struct ItemPlace {
    int folder;
    std::string folderPath;
    std::string name;
};

// Lists what is at the place. Fails where there is something that can't be moved to another file system: a mount point,
// a device, a folder that can't be read.
Status listTree(FileSystemCalls& calls, const ItemPlace& place, CopiedItems& items);

// Copies a listed tree to another file system, with everything it is made of: contents, holes, links, hard links within
// it, fifos, modes, times, owners, user attributes and access control lists. Sockets hold nothing and are left out.
class TreeCopy final : private TreeWalk::Visitor {
public:
    TreeCopy(Log& log, FileSystemCalls& calls, CopyProgress& progress, CopiedItems& items);

    // Makes `to`, which must not be there, a copy of `from`, and marks in the list what was copied as it was then. What
    // has been removed since it was listed is left out. A failure leaves an incomplete copy behind.
    Status run(const ItemPlace& from, const ItemPlace& to);

private:
    Status visit(int folder, const TreeEntry& entry) override;
    Result<Way> enter(int folder, const TreeEntry& entry, int opened, const struct statx& info) override;
    Status leave(int folder, const TreeEntry& entry, int opened, const struct statx& info) override;

    Status copyFile(int folder, const TreeEntry& entry);
    Status copyFile(const TreeEntry& entry, int original);
    Result<struct statx> copyUnchanging(const TreeEntry& entry, int original, int copy);
    Status copyLink(int folder, const TreeEntry& entry, const struct statx& info);
    Status copyFifo(const TreeEntry& entry, const struct statx& info);
    Status linkToFirst(const TreeEntry& entry, const std::string& first);

    int target() const;
    std::string targetName(const TreeEntry& entry) const;
    Status written(int result) const;
    Status failed(const TreeEntry& entry) const;

    Log& log_;
    FileSystemCalls& calls_;
    CopyProgress& progress_;
    CopiedItems& items_;
    const ItemPlace* to_ = nullptr;
    const TreeWalk* walk_ = nullptr;
    FolderTrail trail_;
    FileContents contents_;
    UnwrittenCopies unwritten_;
    FileAttributes* attributes_ = nullptr;
    std::uint64_t bytes_ = 0;

    // Neighbours mostly have one mode: a file made with the last one's needs no call to change it. Nobody else gets at
    // them before their folder has its mode.
    mode_t likelyMode_;
    mode_t umask_;
    bool modesAreAsAsked_ = false;
};

} // namespace letterloft
