#include "tests/fakes/FakeFileManager.h"

#include "storage/SupportFolder.h"

#include <utility>

namespace letterloft {

namespace {

Status failure(const std::string& what, const std::string& path, const std::string& reason) {
    return Status::failure(what + " \"" + path + "\": " + reason + ".");
}

} // namespace

FakeFileManager::FakeFileManager(std::string theHome) : home{std::move(theHome)} {
    addFolder(home);
    protectedPaths = {supportFolder(home), home + "/.config/letterloft/settings.plist"};
}

bool FakeFileManager::isTroubled(const std::string& path) const { return failingPaths.count(tidied(path)) != 0; }

bool FakeFileManager::fileExists(const std::string& path) const {
    return isPath(path) && nodeAt(path, true) != nullptr;
}

bool FakeFileManager::folderExists(const std::string& path) const {
    if (!isPath(path)) return false;
    const Node* node = nodeAt(path, true);
    return node && node->kind == Node::Kind::folder;
}

Status FakeFileManager::createFolder(const std::string& path) {
    if (!isPath(path)) return failure("Can't make", path, "no path");
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
    if (!isPath(path)) return failure("Can't list", path, "no path");
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
    if (!isPath(from) || !isPath(to)) return failure("Can't move", from + "\" to \"" + to, "no path");
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

Status FakeFileManager::removeItem(const std::string& path) {
    if (!isPath(path)) return failure("Can't remove", path, "no path");
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

} // namespace letterloft
