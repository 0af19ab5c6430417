#pragma once

#include "platform/linux/FolderTrail.h"

#include <string>
#include <vector>

namespace letterloft {

// One name in a folder. Valid until the walk goes on.
struct TreeEntry {
    const char* name;
    std::uint64_t inode;
    unsigned char type; // DT_REG and so on; the walk has replaced DT_UNKNOWN
};

// The names in a folder, in batches of bounded size; each batch in the order of the inodes, in which a disk that has to
// turn or to seek reads them faster.
class FolderListing {
public:
    explicit FolderListing(FileSystemCalls& calls) : calls_{calls} {}

    // The next name; errno tells of a failure.
    enum class Next { entry, end, failed };
    Next next(int folder, TreeEntry& entry);

    // Fetches all that is left, so that the folder may be closed. False with errno on failure.
    bool readToEnd(int folder);

private:
    struct Item {
        std::uint64_t inode;
        std::uint32_t name;
        unsigned char type;
    };

    bool readBatch(int folder, std::size_t limit);

    FileSystemCalls& calls_;
    std::vector<Item> items_;
    std::vector<char> names_;
    std::size_t position_ = 0;
    bool complete_ = false;
};

// Goes through a tree without recursion: folders are entered before what is in them and left after it. Never follows a
// link and never crosses into something mounted.
class TreeWalk {
public:
    class Visitor {
    public:
        virtual ~Visitor() = default;

        // Something that is no folder, in `folder`.
        virtual Status visit(int folder, const TreeEntry& entry) = 0;

        enum class Way { into, past };

        // `opened` is the folder itself, `info` what statx(2) says of it.
        virtual Result<Way> enter(int folder, const TreeEntry& entry, int opened, const struct statx& info) = 0;
        virtual Status leave(int folder, const TreeEntry& entry, int opened, const struct statx& info) = 0;

        // A folder that can't be opened, with errno; the walk goes past it if this does not fail.
        virtual Status unopened(const std::string& path, int error);
    };

    TreeWalk(FileSystemCalls& calls, std::string folderPath)
        : calls_{calls}, folderPath_{std::move(folderPath)}, trail_{calls} {}

    // Visits what is called `name` in `folder`, and everything below it.
    Status run(int folder, const std::string& name, Visitor& visitor);

    // Where the walk is, for messages.
    std::string pathOf(const TreeEntry& entry) const;

private:
    // The name is kept here: the listing that lent it to the entry moves its names when it is read to its end.
    struct Level {
        std::string name;
        TreeEntry entry;
        struct statx info;
        FolderListing listing;
    };

    Status arrive(int folder, TreeEntry entry, Visitor& visitor);
    Status goInto(int folder, const TreeEntry& entry, Visitor& visitor);
    Status goOn(Visitor& visitor);
    Status goBack(Visitor& visitor);

    FileSystemCalls& calls_;
    std::string folderPath_;
    FolderTrail trail_;
    std::vector<Level> levels_;
    int top_ = -1;
};

} // namespace letterloft
