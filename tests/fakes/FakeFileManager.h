#pragma once

#include "platform/FileManager.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace letterloft {

// A tree of folders, files and links in memory. Operations are those that return a Status or a Result; they count
// from 1, and can be told to fail.
class FakeFileManager final : public FileManager {
public:
    struct Node {
        enum class Kind { folder, file, link };
        Kind kind = Kind::folder;
        std::string text; // a file's contents, a link's target
        bool operator==(const Node&) const = default;
    };
    using Tree = std::map<std::string, Node>;

    explicit FakeFileManager(std::string home = "/home/user");

    std::string homeFolder() const override { return home; }
    bool fileExists(const std::string& path) const override;
    bool folderExists(const std::string& path) const override;
    Status createFolder(const std::string& path) override;
    Result<std::vector<std::string>> contentsOfFolder(const std::string& path) const override;
    Status moveItem(const std::string& from, const std::string& to) override;
    Status removeItem(const std::string& path) override;

    // Each makes the missing parents. They are the test's own hand: never counted, never failing.
    void addFolder(const std::string& path);
    void addFile(const std::string& path, const std::string& contents);
    void addLink(const std::string& path, const std::string& target);
    void erase(const std::string& path);

    // A file's contents or a link's target; none for a folder or nothing. Links in the path are followed.
    std::optional<std::string> textAt(const std::string& path) const;
    // The contents of all files, in order.
    std::multiset<std::string> allContents() const;

    Tree tree;
    std::set<std::string> protectedPaths;   // neither they nor what holds them is moved
    std::set<std::string> failingPaths;     // operations on them fail; what can be removed before them is removed
    std::set<std::string> unreachablePaths; // can't be looked at, nor can what is below them
    mutable int operations = 0;
    int failingOperation = 0; // the one operation that fails; 0 for none

private:
    // Where `path` leads, whether anything stands there or not; none if a folder on the way is missing.
    std::optional<std::string> resolved(const std::string& path, bool followLast, int depth = 0) const;
    const Node* nodeAt(const std::string& path, bool follow) const;
    bool isUnreachable(const std::string& path) const;
    bool isTroubled(const std::string& path) const;
    void moveTree(const std::string& from, const std::string& to);

    std::string home;
};

} // namespace letterloft
