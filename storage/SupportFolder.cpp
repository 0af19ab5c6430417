#include "storage/SupportFolder.h"

#include "storage/Text.h"

namespace letterloft {

namespace {

std::string tidied(std::string_view path) {
    std::string out;
    for (const char c : path) {
        if (c != '/' || out.empty() || out.back() != '/') out += c;
    }
    if (out.size() > 1 && out.back() == '/') out.pop_back();
    return out;
}

} // namespace

std::string expandedTilde(std::string_view path, std::string_view home) {
    if (path == "~" || path.substr(0, 2) == "~/") return joined(home, path.substr(1));
    return tidied(path);
}

std::string joined(std::string_view base, std::string_view component) {
    std::string out{base};
    out += '/';
    out += component;
    return tidied(out);
}

std::string lastComponent(std::string_view path) {
    const std::string whole = tidied(path);
    const std::size_t slash = whole.rfind('/');
    return slash == std::string::npos || whole.size() == 1 ? whole : whole.substr(slash + 1);
}

std::string supportFolder(std::string_view home) {
    return expandedTilde("~/Library/Application Support/Letterloft/", home);
}

std::string accountFolder(std::string_view home, std::string_view account) {
    return joined(supportFolder(home), account);
}

std::string parkedPath(std::string_view accountFolder, std::string_view item) {
    return joined(accountFolder, lastComponent(item));
}

std::string backupFolder(std::string_view home, const std::string& account, const std::string& stamp) {
    return joined(supportFolder(home), filled("OldData/%@/%@", {account, stamp}));
}

} // namespace letterloft
