#pragma once

#include "platform/Status.h"

#include <string>
#include <vector>

namespace letterloft {

// Files and folders, as the controllers use them. Owned by main; outlives the controllers. Main thread only.
// Paths are absolute; names are bytes, normally UTF-8. Trailing slashes do not count. Nothing stands
// at what is no such path (empty, relative, or with a NUL in it), and operations on it fail.
class FileManager {
public:
    virtual ~FileManager() = default;

    // The user's home folder, without a trailing slash.
    virtual std::string homeFolder() const = 0;

    // Whether anything stands at `path`. A link is followed, so a dangling one counts as nothing. What can't be looked
    // at is logged and counts as something, so that nothing is passed over because of it.
    virtual bool fileExists(const std::string& path) const = 0;

    // Whether a folder, or a link to one, stands at `path`. What can't be looked at is logged and counts as a folder.
    virtual bool folderExists(const std::string& path) const = 0;

    // Afterwards a folder stands at `path`; missing parents are made too, each with mode 0700. A folder that is already
    // there is left as it is and is no failure; anything else there is.
    virtual Status createFolder(const std::string& path) = 0;

    // The names directly inside the folder, hidden ones included, in no particular order. A missing folder, and a
    // listing that breaks off, are failures.
    virtual Result<std::vector<std::string>> contentsOfFolder(const std::string& path) const = 0;

    // Moves a file, folder or link (the link itself) to `to`; afterwards exactly one of the two holds it, whole.
    // Never replaces: anything at `to`, an empty folder or a dangling link included, is a failure. Creates no parents.
    // Across file systems it copies, makes durable, and only then removes: a failure leaves `from` untouched.
    // What is, or holds, the settings file, the instance lock or the support folder is not moved.
    virtual Status moveItem(const std::string& from, const std::string& to) = 0;

    // Removes a file, a link (never what it points at) or a folder with all it holds. A missing path is a failure. What
    // was removed before a failure stays removed.
    virtual Status removeItem(const std::string& path) = 0;
};

} // namespace letterloft
