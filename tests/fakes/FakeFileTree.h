#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

namespace letterloft {

// Folders, files and links in memory, by their absolute paths.
class FakeFileTree {
public:
    struct Node {
        enum class Kind { folder, file, link };
        Kind kind = Kind::folder;
        std::string text; // a file's contents, a link's target
        bool operator==(const Node&) const = default;
    };

    // Each makes the missing parents. They are the test's own hand: never counted, never failing.
    void addFolder(const std::string& path);
    void addFile(const std::string& path, const std::string& contents);
    void addLink(const std::string& path, const std::string& target);
    void erase(const std::string& path);

    // A file's contents or a link's target; none for a folder or nothing. Links in the path are followed.
    std::optional<std::string> textAt(const std::string& path) const;
    // The contents of all files, in order.
    std::multiset<std::string> allContents() const;

    std::map<std::string, Node> tree{{"/", {}}};

protected:
    static std::string parentOf(const std::string& path);
    static bool isAtOrBelow(const std::string& path, const std::string& folder);
    static bool isPath(const std::string& path);
    static std::string tidied(const std::string& path);

    // Where `path` leads, whether anything stands there or not; none if a folder on the way is missing.
    std::optional<std::string> resolved(const std::string& path, bool followLast, int depth = 0) const;
    const Node* nodeAt(const std::string& path, bool follow) const;
    void moveTree(const std::string& from, const std::string& to);
};

} // namespace letterloft
