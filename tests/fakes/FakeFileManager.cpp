#include "tests/fakes/FakeFileManager.h"

#include "storage/SupportFolder.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace letterloft {

namespace {

using Node = FakeFileManager::Node;

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool isAtOrBelow(const std::string& path, const std::string& folder) {
    return path == folder || folder == "/" || path.compare(0, folder.size() + 1, folder + "/") == 0;
}

std::string tidied(const std::string& path) {
    assert(!path.empty() && path.front() == '/'); // paths are absolute
    return joined(path, "");
}

Status failure(const std::string& what, const std::string& path, const std::string& reason) {
    return Status::failure(what + " \"" + path + "\": " + reason + ".");
}

} // namespace

FakeFileManager::FakeFileManager(std::string theHome) : home{std::move(theHome)} {
    tree["/"] = {};
    addFolder(home);
    protectedPaths = {supportFolder(home), home + "/.config/letterloft/settings.plist"};
}

std::optional<std::string> FakeFileManager::resolved(const std::string& path, bool followLast, int depth) const {
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

const Node* FakeFileManager::nodeAt(const std::string& path, bool follow) const {
    const auto at = resolved(path, follow);
    const auto found = at ? tree.find(*at) : tree.end();
    return found == tree.end() ? nullptr : &found->second;
}

bool FakeFileManager::isUnreachable(const std::string& path) const {
    for (const std::string& folder : unreachablePaths) {
        if (isAtOrBelow(tidied(path), folder)) return true;
    }
    return false;
}

bool FakeFileManager::isTroubled(const std::string& path) const {
    return isUnreachable(path) || failingPaths.count(tidied(path)) != 0;
}

bool FakeFileManager::fileExists(const std::string& path) const {
    return isUnreachable(path) || nodeAt(path, true) != nullptr;
}

bool FakeFileManager::folderExists(const std::string& path) const {
    const Node* node = nodeAt(path, true);
    return isUnreachable(path) || (node && node->kind == Node::Kind::folder);
}

Status FakeFileManager::createFolder(const std::string& path) {
    if (++operations == failingOperation || isTroubled(path)) return failure("Can't make", path, "no space left");
    const std::string whole = tidied(path);
    for (std::size_t end = 1; end != std::string::npos;) {
        end = whole.find('/', end + 1);
        const std::string part = whole.substr(0, end);
        if (folderExists(part)) continue;
        const auto at = resolved(part, false);
        if (!at || tree.count(*at) != 0) return failure("Can't make", path, "not a folder");
        tree[*at] = {};
    }
    return Status::ok();
}

Result<std::vector<std::string>> FakeFileManager::contentsOfFolder(const std::string& path) const {
    if (++operations == failingOperation || isTroubled(path)) return failure("Can't list", path, "input/output error");
    if (!folderExists(path)) return failure("Can't list", path, "no such folder");
    const std::string folder = *resolved(path, true);
    std::vector<std::string> names;
    for (const auto& [at, node] : tree) {
        if (at != "/" && parentOf(at) == folder) names.push_back(lastComponent(at));
    }
    return names;
}

Status FakeFileManager::moveItem(const std::string& from, const std::string& to) {
    if (++operations == failingOperation || isTroubled(from) || isTroubled(to))
        return failure("Can't move", from, "input/output error");
    const auto source = resolved(from, false);
    const auto destination = resolved(to, false);
    if (!source || tree.count(*source) == 0) return failure("Can't move", from, "it is not there");
    if (!destination || !folderExists(parentOf(*destination))) return failure("Can't move to", to, "no such folder");
    if (tree.count(*destination) != 0) return failure("Can't move to", to, "something is there already");
    if (isAtOrBelow(*destination, *source)) return failure("Can't move", from, "it would lie inside itself");
    for (const std::string& kept : protectedPaths) {
        if (isAtOrBelow(resolved(kept, true).value_or(kept), *source))
            return failure("Can't move", from, "Letterloft's own files are in it");
    }
    moveTree(*source, *destination);
    return Status::ok();
}

void FakeFileManager::moveTree(const std::string& from, const std::string& to) {
    Tree moved;
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

Status FakeFileManager::removeItem(const std::string& path) {
    if (++operations == failingOperation || isTroubled(path)) return failure("Can't remove", path, "access denied");
    const auto at = resolved(path, false);
    if (!at || tree.count(*at) == 0) return failure("Can't remove", path, "it is not there");
    if (*at == "/" || *at == home) return failure("Can't remove", path, "it holds everything");
    for (auto it = tree.end(); it != tree.begin();) { // backwards: what a folder holds goes before the folder
        --it;
        if (!isAtOrBelow(it->first, *at)) continue;
        if (isTroubled(it->first)) return failure("Can't remove", it->first, "access denied");
        it = tree.erase(it);
    }
    return Status::ok();
}

void FakeFileManager::addFolder(const std::string& path) {
    for (std::string at = tidied(path); at != "/"; at = parentOf(at))
        tree.try_emplace(at);
}

void FakeFileManager::addFile(const std::string& path, const std::string& contents) {
    addFolder(path);
    tree[path] = {Node::Kind::file, contents};
}

void FakeFileManager::addLink(const std::string& path, const std::string& target) {
    addFolder(path);
    tree[path] = {Node::Kind::link, target};
}

void FakeFileManager::erase(const std::string& path) {
    std::erase_if(tree, [&](const auto& entry) { return isAtOrBelow(entry.first, path); });
}

std::optional<std::string> FakeFileManager::textAt(const std::string& path) const {
    const Node* node = nodeAt(path, false);
    return node && node->kind != Node::Kind::folder ? std::optional{node->text} : std::nullopt;
}

std::multiset<std::string> FakeFileManager::allContents() const {
    std::multiset<std::string> contents;
    for (const auto& [path, node] : tree) {
        if (node.kind == Node::Kind::file) contents.insert(node.text);
    }
    return contents;
}

} // namespace letterloft
