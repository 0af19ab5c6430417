#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace letterloft {

// A folder on each of two file systems, removed at the end. Ends the test program when there are not two: a test of
// moves across file systems that ran on one would prove nothing.
class ScratchFolders {
public:
    ScratchFolders();
    ~ScratchFolders();
    ScratchFolders(const ScratchFolders&) = delete;
    ScratchFolders& operator=(const ScratchFolders&) = delete;

    const std::string& onMemory() const { return onMemory_; }
    const std::string& onDisk() const { return onDisk_; }
    std::string at(const std::string& name) const { return onMemory_ + "/" + name; }

private:
    std::string onMemory_;
    std::string onDisk_;
};

// With the folders it is in.
void writeFile(const std::string& path, const std::string& contents);
std::string contentsOf(const std::string& path);

// Of the last change, of a link itself; to the nanosecond.
void setTime(const std::string& path, long seconds);

// A folder of 12 things that copies get wrong: an empty file, one with a hole, one of a few blocks, two names of one
// file, a program, a link to nothing, a link out of the tree to `sentinel`, an empty folder, a read-only folder with a
// file, a fifo, a name of 255 bytes, and one with a newline and bytes that are no text. All have times of their own,
// one has a user attribute.
void makeTortureTree(const std::string& path, const std::string& sentinel);

// Everything that a faithful copy keeps, for each path below `path` and itself: type, mode, owner, times, attributes,
// contents or link text, allocated or sparse, and which names are of one file.
using TreeDescription = std::map<std::string, std::string>;
TreeDescription described(const std::string& path);

} // namespace letterloft
