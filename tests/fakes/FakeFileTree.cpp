#include "tests/fakes/FakeFileTree.h"

#include "storage/SupportFolder.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace letterloft {

std::string FakeFileTree::parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool FakeFileTree::isAtOrBelow(const std::string& path, const std::string& folder) {
    return path == folder || folder == "/" || path.compare(0, folder.size() + 1, folder + "/") == 0;
}

bool FakeFileTree::isPath(const std::string& path) {
    return !path.empty() && path.front() == '/' && path.find('\0') == std::string::npos;
}

std::string FakeFileTree::tidied(const std::string& path) {
    assert(isPath(path));
    return joined(path, "");
}

std::optional<std::string> FakeFileTree::resolved(const std::string& path, bool followLast, int depth) const {
    if (depth > 40) return std::nullopt; // a ring of links
    std::string at = "/";
    const std::string whole = tidied(path);
    for (std::size_t begin = 1; begin < whole.size();) {
        const auto here = tree.find(at);
        if (here == tree.end() || here->second.kind != Node::Kind::folder) return std::nullopt;
        const std::size_t end = std::min(whole.find('/', begin), whole.size());
        const std::string component = whole.substr(begin, end - begin);
        const bool isLast = end == whole.size();
        begin = end + 1;
        if (component == ".") continue;
        if (component == "..") {
            at = parentOf(at);
            continue;
        }
        const std::string next = joined(at, component);
        const auto found = tree.find(next);
        const bool isLink = found != tree.end() && found->second.kind == Node::Kind::link;
        if (isLink && (!isLast || followLast)) {
            const std::string& target = found->second.text;
            const auto led = resolved(target.front() == '/' ? target : joined(at, target), true, depth + 1);
            if (!led) return std::nullopt;
            at = *led;
        } else {
            at = next;
        }
    }
    return at;
}

const FakeFileTree::Node* FakeFileTree::nodeAt(const std::string& path, bool follow) const {
    const auto at = resolved(path, follow);
    const auto found = at ? tree.find(*at) : tree.end();
    return found == tree.end() ? nullptr : &found->second;
}

void FakeFileTree::moveTree(const std::string& from, const std::string& to) {
    std::map<std::string, Node> moved;
    for (auto it = tree.begin(); it != tree.end();) {
        if (isAtOrBelow(it->first, from)) {
            moved[to + it->first.substr(from.size())] = std::move(it->second);
            it = tree.erase(it);
        } else {
            ++it;
        }
    }
    tree.merge(moved);
}

void FakeFileTree::addFolder(const std::string& path) {
    for (std::string at = tidied(path); at != "/"; at = parentOf(at))
        tree.try_emplace(at);
}

void FakeFileTree::addFile(const std::string& path, const std::string& contents) {
    addFolder(path);
    tree[path] = {Node::Kind::file, contents};
}

void FakeFileTree::addLink(const std::string& path, const std::string& target) {
    assert(!target.empty());
    addFolder(path);
    tree[path] = {Node::Kind::link, target};
}

void FakeFileTree::erase(const std::string& path) {
    std::erase_if(tree, [&](const auto& entry) { return isAtOrBelow(entry.first, path); });
}

std::optional<std::string> FakeFileTree::textAt(const std::string& path) const {
    const Node* node = nodeAt(path, false);
    return node && node->kind != Node::Kind::folder ? std::optional{node->text} : std::nullopt;
}

std::multiset<std::string> FakeFileTree::allContents() const {
    std::multiset<std::string> contents;
    for (const auto& [path, node] : tree) {
        if (node.kind == Node::Kind::file) contents.insert(node.text);
    }
    return contents;
}

} // namespace letterloft
