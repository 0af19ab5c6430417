#include "platform/linux/TreeCopy.h"

#include "platform/linux/FileErrors.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <array>
#include <cerrno>
#include <climits>
#include <dirent.h>

namespace letterloft {

namespace {

constexpr mode_t madeWith = S_IRUSR | S_IWUSR;

mode_t currentUmask() {
    const mode_t mask = umask(0777);
    umask(mask);
    return mask;
}

class TreeList final : public TreeWalk::Visitor {
public:
    TreeList(FileSystemCalls& calls, const TreeWalk& walk, CopiedItems& items)
        : calls_{calls}, walk_{walk}, items_{items} {}

    Status visit(int folder, const TreeEntry& entry) override {
        struct statx info {};
        if (calls_.statx(folder, entry.name, AT_SYMLINK_NOFOLLOW, &info) != 0)
            return errno == ENOENT ? Status::ok() : systemFailure("%@ can't be looked at", walk_.pathOf(entry));
        if (isMountPoint(info)) return failure("%@ is a mount point", walk_.pathOf(entry));
        if (S_ISCHR(info.stx_mode) || S_ISBLK(info.stx_mode)) return failure("%@ is a device", walk_.pathOf(entry));
        items_.add(info);
        return Status::ok();
    }

    Result<Way> enter(int, const TreeEntry&, int, const struct statx& info) override {
        items_.add(info);
        return Way::into;
    }

    Status leave(int, const TreeEntry&, int, const struct statx&) override { return Status::ok(); }

private:
    FileSystemCalls& calls_;
    const TreeWalk& walk_;
    CopiedItems& items_;
};

} // namespace

Status listTree(FileSystemCalls& calls, const ItemPlace& place, CopiedItems& items) {
    TreeWalk walk{calls, place.folderPath};
    TreeList list{calls, walk, items};
    Status listed = walk.run(place.folder, place.name, list);
    items.endOfList();
    return listed;
}

TreeCopy::TreeCopy(Log& log, FileSystemCalls& calls, CopyProgress& progress, CopiedItems& items)
    : log_{log},
      calls_{calls},
      progress_{progress},
      items_{items},
      trail_{calls},
      contents_{calls, [this](std::uint64_t bytes) { progress_.progressed(bytes_ += bytes); }},
      unwritten_{calls},
      likelyMode_{madeWith},
      umask_{currentUmask()} {}

Status TreeCopy::run(const ItemPlace& from, const ItemPlace& to) {
    TreeWalk walk{calls_, from.folderPath};
    FileAttributes attributes{log_, calls_, joined(from.folderPath, from.name)};
    to_ = &to;
    walk_ = &walk;
    attributes_ = &attributes;
    if (Status copied = walk.run(from.folder, from.name, *this); !copied) return copied;
    return written(unwritten_.closeAll());
}

Status TreeCopy::visit(int folder, const TreeEntry& entry) {
    if (entry.type == DT_REG) return copyFile(folder, entry);
    struct statx info {};
    if (calls_.statx(folder, entry.name, AT_SYMLINK_NOFOLLOW, &info) != 0)
        return errno == ENOENT ? Status::ok() : failed(entry);
    if (S_ISLNK(info.stx_mode)) return copyLink(folder, entry, info);
    if (S_ISFIFO(info.stx_mode)) return copyFifo(entry, info);
    if (!S_ISSOCK(info.stx_mode))
        return failure("%@ can't be copied: it has changed into something else", walk_->pathOf(entry));
    log_.write(filledForLog("The socket %@ was not moved with the rest: it holds nothing.", {walk_->pathOf(entry)}));
    items_.markCopied(info);
    return Status::ok();
}

Result<TreeWalk::Visitor::Way> TreeCopy::enter(int, const TreeEntry& entry, int, const struct statx& source) {
    const std::string name = targetName(entry);
    struct statx info {};
    if (calls_.mkdirat(target(), name.c_str(), S_IRWXU) != 0) return failed(entry);
    OpenFile copy = openForReading(calls_, target(), name.c_str(), O_DIRECTORY);
    if (!copy || calls_.statx(copy.get(), "", AT_EMPTY_PATH, &info) != 0) return failed(entry);
    if (trail_.depth() == 0) modesAreAsAsked_ = attributes_->removeInherited(copy.get());
    trail_.enter(std::move(copy), name, FileIdentity{info});
    items_.markCopied(source);
    return Way::into;
}

Status TreeCopy::leave(int, const TreeEntry& entry, int opened, const struct statx& info) {
    OpenFile copy;
    if (Status left = trail_.leave(copy); !left) return left;
    if (attributes_->copy(opened, copy.get(), info, S_IRWXU) != 0 || copy.close() != 0) return failed(entry);
    return Status::ok();
}

Status TreeCopy::copyFile(int folder, const TreeEntry& entry) {
    std::string* first = items_.firstCopy(entry.inode);
    if (first != nullptr && !first->empty()) return linkToFirst(entry, *first);
    const OpenFile original = openForReading(calls_, folder, entry.name);
    if (!original) return errno == ENOENT ? Status::ok() : failed(entry);
    if (Status copied = copyFile(entry, original.get()); !copied) return copied;
    if (first != nullptr) *first = trail_.path() + "/" + targetName(entry);
    return Status::ok();
}

Status TreeCopy::copyFile(const TreeEntry& entry, int original) {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const bool top = trail_.depth() == 0;
    const mode_t asked = modesAreAsAsked_ ? likelyMode_ & ~umask_ : madeWith;
    OpenFile copy{calls_, calls_.openat(target(), targetName(entry).c_str(), flags, asked)};
    if (!copy) return failed(entry);
    const Result<struct statx> info = copyUnchanging(entry, original, copy.get());
    if (!info) return info.status();
    if (top) attributes_->removeInherited(copy.get());
    const mode_t made = top ? S_IRWXU : asked & ~umask_;
    if (attributes_->copy(original, copy.get(), *info, made) != 0) return failed(entry);
    // Attributes can't be given to what may not be written to.
    likelyMode_ = (info->stx_mode & madeWith) == madeWith ? info->stx_mode & 0777u : madeWith;
    items_.markCopied(*info);
    return written(unwritten_.add(std::move(copy), info->stx_size));
}

// Copies the contents as they were at one moment: if the file has changed since it was last looked at, which is when it
// was listed at first, it is read once more. A file of the list is known to be a regular one without asking again
// before it is read.
Result<struct statx> TreeCopy::copyUnchanging(const TreeEntry& entry, int original, int copy) {
    const CopiedItems::Item* listed = items_.find(entry.inode);
    struct statx info {};
    if (listed == nullptr && calls_.statx(original, "", AT_EMPTY_PATH, &info) != 0) return failed(entry);
    CopiedItems::Item before = listed != nullptr ? *listed : CopiedItems::Item::from(info);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto copyAll = before.hasHoles ? &FileContents::copyWithHoles : &FileContents::copy;
        const bool copied = (contents_.*copyAll)(original, copy, before.size) == 0;
        const bool isShort = !copied && errno == ENODATA; // it has shrunk, or its file system tells a wrong size
        if (!copied && !isShort) return failed(entry);
        if (calls_.statx(original, "", AT_EMPTY_PATH, &info) != 0) return failed(entry);
        const CopiedItems::Item after = CopiedItems::Item::from(info);
        if (copied && S_ISREG(info.stx_mode) && after.isSameAs(before)) return info;
        before = after;
        if (calls_.lseek(original, 0, SEEK_SET) < 0 || calls_.lseek(copy, 0, SEEK_SET) < 0 ||
            calls_.ftruncate(copy, 0) != 0)
            return failed(entry);
    }
    return failure("%@ can't be copied: it keeps changing while it is read, or is shorter than it says",
                   walk_->pathOf(entry));
}

Status TreeCopy::copyLink(int folder, const TreeEntry& entry, const struct statx& info) {
    std::array<char, PATH_MAX> text; // NOLINT(cppcoreguidelines-pro-type-member-init)
    const ssize_t size = calls_.readlinkat(folder, entry.name, text.data(), text.size() - 1);
    if (size < 0) return failed(entry);
    text[static_cast<std::size_t>(size)] = 0;
    const std::string name = targetName(entry);
    if (calls_.symlinkat(text.data(), target(), name.c_str()) != 0 ||
        attributes_->copyByName(target(), name.c_str(), info) != 0)
        return failed(entry);
    items_.markCopied(info);
    return Status::ok();
}

Status TreeCopy::copyFifo(const TreeEntry& entry, const struct statx& info) {
    const std::string name = targetName(entry);
    if (calls_.mknodat(target(), name.c_str(), S_IFIFO | madeWith) != 0 ||
        attributes_->copyByName(target(), name.c_str(), info) != 0)
        return failed(entry);
    items_.markCopied(info);
    return Status::ok();
}

// The path to the first copy may be longer than the system takes at once.
Status TreeCopy::linkToFirst(const TreeEntry& entry, const std::string& first) {
    int folder = to_->folder;
    OpenFile opened;
    std::size_t begin = 0;
    for (std::size_t slash = first.find('/'); slash != std::string::npos; slash = first.find('/', begin)) {
        const std::string name = first.substr(begin, slash - begin);
        opened =
            OpenFile{calls_, calls_.openat(folder, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC, 0)};
        if (!opened) return failed(entry);
        folder = opened.get();
        begin = slash + 1;
    }
    if (calls_.linkat(folder, first.c_str() + begin, target(), targetName(entry).c_str()) != 0) return failed(entry);
    return Status::ok();
}

int TreeCopy::target() const { return trail_.depth() == 0 ? to_->folder : trail_.innermost(); }

std::string TreeCopy::targetName(const TreeEntry& entry) const { return trail_.depth() == 0 ? to_->name : entry.name; }

// Which of the copies it was is not told.
Status TreeCopy::written(int result) const {
    return result == 0 ? Status::ok() : systemFailure("the copies in %@ can't be written", to_->folderPath);
}

Status TreeCopy::failed(const TreeEntry& entry) const {
    const int error = errno;
    return systemFailure("%@ can't be copied", walk_->pathOf(entry), error);
}

} // namespace letterloft
