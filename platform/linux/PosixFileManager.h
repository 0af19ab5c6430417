#pragma once

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/linux/ChangedFolders.h"
#include "platform/linux/CopyProgress.h"
#include "platform/linux/FileSystemCalls.h"
#include "platform/linux/ProtectedPaths.h"

#include <sys/types.h>

namespace letterloft {

// Files and folders through Linux's system calls. Everything it makes is for this user alone, whatever the umask.
// Within one file system a move is one atomic rename; across file systems it leaves hidden marks (MoveMarks.h) while it
// is at work, by which one that was broken off is settled later.
class PosixFileManager final : public FileManager {
public:
    struct Parts {
        Log& log;
        FileSystemCalls& calls;
        CopyProgress& progress; // told of copies across file systems
    };

    // `home` is an absolute path without a trailing slash. What is, or holds, one of the protected paths is not moved.
    PosixFileManager(const Parts& parts, std::string home, std::vector<std::string> protectedPaths);

    std::string homeFolder() const override { return home_; }
    bool fileExists(const std::string& path) const override;
    bool folderExists(const std::string& path) const override;
    Status createFolder(const std::string& path) override;
    Result<std::vector<std::string>> contentsOfFolder(const std::string& path) const override;
    Status moveItem(const std::string& from, const std::string& to) override;
    Status removeItem(const std::string& path) override;

    // Makes every move and every new folder since the last call durable: each folder changed by them is synced once.
    // One that has been removed meanwhile is passed over.
    Status makeMovesDurable();

    // Ends what an earlier run of the program left behind in these folders when it died in a move across file systems:
    // afterwards each item stands whole at one of its two places. What can't be settled safely stays, and the log names
    // it. Folders that are missing are passed over.
    void settle(const std::vector<std::string>& folders);

private:
    bool existsWithMode(const std::string& path, mode_t type) const;
    Status makeFolder(const std::string& path);
    Status refusalToMove(const std::string& from, const std::string& to);
    std::string reasonAgainstMove(const std::string& from, const std::string& to, int error) const;
    bool isInside(const std::string& path, const FileIdentity& folder) const;

    Parts parts_;
    std::string home_;
    ChangedFolders changedFolders_;
    ProtectedPaths protectedPaths_;
};

} // namespace letterloft
