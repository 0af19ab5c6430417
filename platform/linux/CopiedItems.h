#pragma once

#include "platform/linux/FileSystemCalls.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace letterloft {

// What a tree on one file system held when it was walked, and which of it has been copied since; 24 bytes for each.
// Things are told apart by inode, size and time of last change; folders by inode alone, since they change as they are
// emptied.
class CopiedItems {
public:
    struct Item {
        std::uint64_t inode;
        std::uint64_t size : 62;
        std::uint64_t hasHoles : 1;
        std::uint64_t copied : 1;
        std::int64_t modified; // nanoseconds since 1970

        static Item from(const struct statx& info);
        bool isSameAs(const Item& other) const;
    };

    // First all that is found; then `endOfList`, after which the other operations may be used.
    void add(const struct statx& info);
    void endOfList();

    // None for what has come since.
    const Item* find(std::uint64_t inode) const;

    // It has been copied as it was then.
    void markCopied(const struct statx& info);
    bool isCopied(const struct statx& info) const;

    // For a file with more than one name: where the first of them was copied to, empty until it is. None for others.
    std::string* firstCopy(std::uint64_t inode);

    // Sums over the list: lower bounds of what a copy takes.
    std::uint64_t bytes() const { return bytes_; }
    std::uint64_t count() const { return count_; }

private:
    std::vector<Item> items_;
    std::map<std::uint64_t, std::string> firstCopies_;
    std::uint64_t bytes_ = 0;
    std::uint64_t count_ = 0;
};

} // namespace letterloft
