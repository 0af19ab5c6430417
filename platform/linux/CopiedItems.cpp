#include "platform/linux/CopiedItems.h"

#include <algorithm>

namespace letterloft {

namespace {

bool comesBefore(const CopiedItems::Item& item, std::uint64_t inode) { return item.inode < inode; }

} // namespace

CopiedItems::Item CopiedItems::Item::from(const struct statx& info) {
    const bool folder = isFolder(info);
    const std::uint64_t size = folder ? 0 : info.stx_size & ((std::uint64_t{1} << 62) - 1);
    const std::int64_t modified = static_cast<std::int64_t>(
        static_cast<std::uint64_t>(info.stx_mtime.tv_sec) * 1000000000u + info.stx_mtime.tv_nsec);
    const bool holes = S_ISREG(info.stx_mode) && info.stx_blocks * 512 < info.stx_size;
    return {info.stx_ino, size, holes, false, folder ? 0 : modified};
}

bool CopiedItems::Item::isSameAs(const Item& other) const {
    return inode == other.inode && size == other.size && modified == other.modified;
}

void CopiedItems::add(const struct statx& info) {
    ++count_;
    if (S_ISREG(info.stx_mode)) bytes_ += std::min<std::uint64_t>(info.stx_size, info.stx_blocks * 512);
    if (S_ISREG(info.stx_mode) && info.stx_nlink > 1) firstCopies_.try_emplace(info.stx_ino);
    items_.push_back(Item::from(info));
}

void CopiedItems::endOfList() {
    std::sort(items_.begin(), items_.end(), [](const Item& a, const Item& b) { return a.inode < b.inode; });
    const auto sameInode = [](const Item& a, const Item& b) { return a.inode == b.inode; };
    items_.erase(std::unique(items_.begin(), items_.end(), sameInode), items_.end());
}

const CopiedItems::Item* CopiedItems::find(std::uint64_t inode) const {
    const auto found = std::lower_bound(items_.begin(), items_.end(), inode, comesBefore);
    return found == items_.end() || found->inode != inode ? nullptr : &*found;
}

void CopiedItems::markCopied(const struct statx& info) {
    Item item = Item::from(info);
    item.copied = 1;
    const auto place = std::lower_bound(items_.begin(), items_.end(), item.inode, comesBefore);
    if (place == items_.end() || place->inode != item.inode)
        items_.insert(place, item);
    else
        *place = item;
}

bool CopiedItems::isCopied(const struct statx& info) const {
    const Item* item = find(info.stx_ino);
    return item != nullptr && item->copied && item->isSameAs(Item::from(info));
}

std::string* CopiedItems::firstCopy(std::uint64_t inode) {
    const auto found = firstCopies_.find(inode);
    return found == firstCopies_.end() ? nullptr : &found->second;
}

} // namespace letterloft
