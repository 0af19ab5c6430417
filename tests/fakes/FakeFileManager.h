#pragma once

#include "platform/FileManager.h"
#include "tests/fakes/FakeFileTree.h"

#include <set>
#include <string>
#include <vector>

namespace letterloft {

// A file manager over a tree in memory. Operations are those that return a Status or a Result; they count from 1, and
// can be told to fail.
class FakeFileManager final : public FileManager, public FakeFileTree {
public:
    explicit FakeFileManager(std::string home = "/home/user");

    std::string homeFolder() const override { return home; }
    bool fileExists(const std::string& path) const override;
    bool folderExists(const std::string& path) const override;
    Status createFolder(const std::string& path) override;
    Result<std::vector<std::string>> contentsOfFolder(const std::string& path) const override;
    Status moveItem(const std::string& from, const std::string& to) override;
    Status removeItem(const std::string& path) override;

    std::set<std::string> protectedPaths; // neither they nor what holds them is moved
    std::set<std::string> failingPaths;   // operations on them fail; what can be removed before them is removed
    mutable int operations = 0;
    int failingOperation = 0; // the one operation that fails; 0 for none

private:
    bool isTroubled(const std::string& path) const;

    std::string home;
};

} // namespace letterloft
