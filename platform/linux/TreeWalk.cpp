#include "platform/linux/TreeWalk.h"

#include "platform/linux/FileErrors.h"
#include "storage/SupportFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>

namespace letterloft {

namespace {

constexpr std::size_t batchSize = 32768;

bool isDotOrDotDot(const char* name) { return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)); }

} // namespace

FolderListing::Next FolderListing::next(int folder, TreeEntry& entry) {
    if (position_ == items_.size() && !complete_) {
        items_.clear();
        names_.clear();
        position_ = 0;
        if (!readBatch(folder, batchSize)) return Next::failed;
    }
    if (position_ == items_.size()) return Next::end;
    const Item& item = items_[position_++];
    entry = {names_.data() + item.name, item.inode, item.type};
    return Next::entry;
}

bool FolderListing::readToEnd(int folder) { return complete_ || readBatch(folder, SIZE_MAX); }

bool FolderListing::readBatch(int folder, std::size_t limit) {
    const std::size_t first = items_.size();
    alignas(dirent64) std::array<char, 32768> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init)
    while (!complete_ && items_.size() - first < limit) {
        const ssize_t size = calls_.getdents64(folder, buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return false;
        complete_ = size == 0;
        for (const char* at = buffer.data(); at < buffer.data() + size;) {
            const auto* record = reinterpret_cast<const dirent64*>(at); // the layout that getdents64(2) gives
            at += record->d_reclen;
            if (isDotOrDotDot(record->d_name)) continue;
            items_.push_back({record->d_ino, static_cast<std::uint32_t>(names_.size()), record->d_type});
            names_.insert(names_.end(), record->d_name, record->d_name + std::strlen(record->d_name) + 1);
        }
    }
    std::sort(items_.begin() + static_cast<std::ptrdiff_t>(first), items_.end(),
              [](const Item& a, const Item& b) { return a.inode < b.inode; });
    return true;
}

Status TreeWalk::Visitor::unopened(const std::string& path, int error) {
    return systemFailure("%@ can't be opened", path, error);
}

Status TreeWalk::run(int folder, const std::string& name, Visitor& visitor) {
    top_ = folder;
    if (Status arrived = arrive(folder, {name.c_str(), 0, DT_UNKNOWN}, visitor); !arrived) return arrived;
    while (!levels_.empty())
        if (Status gone = goOn(visitor); !gone) return gone;
    return Status::ok();
}

std::string TreeWalk::pathOf(const TreeEntry& entry) const {
    const std::string inner = trail_.path();
    return joined(inner.empty() ? folderPath_ : joined(folderPath_, inner), entry.name);
}

Status TreeWalk::arrive(int folder, TreeEntry entry, Visitor& visitor) {
    if (entry.type == DT_UNKNOWN) {
        struct statx info {};
        if (calls_.statx(folder, entry.name, AT_SYMLINK_NOFOLLOW, &info) != 0)
            return systemFailure("%@ can't be looked at", pathOf(entry));
        entry.type = IFTODT(info.stx_mode);
        entry.inode = info.stx_ino;
    }
    return entry.type == DT_DIR ? goInto(folder, entry, visitor) : visitor.visit(folder, entry);
}

Status TreeWalk::goInto(int folder, const TreeEntry& entry, Visitor& visitor) {
    OpenFile opened = openForReading(calls_, folder, entry.name, O_DIRECTORY);
    if (!opened) return visitor.unopened(pathOf(entry), errno);
    struct statx info {};
    if (calls_.statx(opened.get(), "", AT_EMPTY_PATH, &info) != 0)
        return systemFailure("%@ can't be looked at", pathOf(entry));
    if (isMountPoint(info) || (!levels_.empty() && FileIdentity{info}.device != trail_.identity().device))
        return failure("%@ is a mount point", pathOf(entry));
    const Result<Visitor::Way> way = visitor.enter(folder, entry, opened.get(), info);
    if (!way || *way == Visitor::Way::past) return way.status();
    if (levels_.size() >= FolderTrail::keptOpen) {
        // The trail is about to close this one: nothing can be listed from it later.
        const std::size_t closing = levels_.size() - FolderTrail::keptOpen;
        if (!levels_[closing].listing.readToEnd(trail_.folderAt(closing)))
            return systemFailure("%@ can't be listed", pathOf(entry));
    }
    trail_.enter(std::move(opened), entry.name, FileIdentity{info});
    levels_.push_back({entry.name, entry, info, FolderListing{calls_}});
    return Status::ok();
}

Status TreeWalk::goOn(Visitor& visitor) {
    TreeEntry entry{};
    switch (levels_.back().listing.next(trail_.innermost(), entry)) {
    case FolderListing::Next::entry:
        return arrive(trail_.innermost(), entry, visitor);
    case FolderListing::Next::end:
        return goBack(visitor);
    case FolderListing::Next::failed:
        break;
    }
    return systemFailure("%@ can't be listed", joined(folderPath_, trail_.path()));
}

Status TreeWalk::goBack(Visitor& visitor) {
    OpenFile left;
    if (Status back = trail_.leave(left); !back) return back;
    Level level = std::move(levels_.back());
    levels_.pop_back();
    level.entry.name = level.name.c_str();
    return visitor.leave(trail_.depth() == 0 ? top_ : trail_.innermost(), level.entry, left.get(), level.info);
}

} // namespace letterloft
