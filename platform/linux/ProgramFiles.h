#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>

namespace letterloft {

// Questions about the files programs are made of. Paths are bytes; links are followed. What can't be looked at is
// answered as if it were not there: nothing here decides about a user's data.

// Which file it is, whatever name leads to it.
struct ProgramFileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const ProgramFileIdentity&) const = default;
};

std::optional<ProgramFileIdentity> identityOfFile(const std::string& path);

// realpath(3); none if a part of the path is missing.
std::optional<std::string> canonicalPath(const std::string& path);

// The same as far as the path exists: a file that is gone keeps its name within its canonical folder.
std::string canonicalPathOfMissing(const std::string& path);

bool isSomething(const std::string& path);
bool isFolder(const std::string& path);

// A regular file that this user may execute.
bool isProgram(const std::string& path);

// Where the shell would find the program: an absolute path. `name` may be one already.
std::optional<std::string> programInPath(const std::string& name);

// All bytes of a regular file; none of one that is longer than `limit`. Never waits, as opening a fifo would.
std::optional<std::string> contentsOfSmallFile(const std::string& path, std::size_t limit = std::size_t{1} << 20);

// At most the first `limit` bytes, of a file that tells no size too (/proc).
std::optional<std::string> headOfFile(const std::string& path, std::size_t limit);

} // namespace letterloft
