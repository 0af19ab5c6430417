#pragma once

#include "platform/FileManager.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace letterloft {

// A file manager over a tree in memory, without links. Operations are those that return a Status or a Result; they
// count from 1, and can be told to fail.
class FakeFileManager final : public FileManager {
public:
    explicit FakeFileManager(std::string home = "/home/user");

    std::string homeFolder() const override { return home; }
    bool fileExists(const std::string& path) const override;
    bool folderExists(const std::string& path) const override;
    Status createFolder(const std::string& path) override;
    Result<std::vector<std::string>> contentsOfFolder(const std::string& path) const override;
    Status moveItem(const std::string& from, const std::string& to) override;
    Status removeItem(const std::string& path) override;

    // Each of the two makes the missing parents. They are the test's own hand: never counted, never failing.
    void addFolder(const std::string& path);
    void addFile(const std::string& path, const std::string& contents);
    void erase(const std::string& path);

    // A file's contents; none for a folder or nothing.
    std::optional<std::string> textAt(const std::string& path) const;
    std::multiset<std::string> allContents() const;

    std::map<std::string, std::optional<std::string>> tree{{"/", {}}}; // a folder has no contents
    std::set<std::string> protectedPaths;                              // neither they nor what holds them is moved
    mutable int operations = 0;
    int failingOperation = 0; // the one operation that fails; 0 for none

private:
    bool begins() const; // counts an operation, and says whether it does not fail

    std::string home;
};

} // namespace letterloft
