#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace letterloft {

// Whether the list holds the text, compared whole and case-sensitively.
inline bool contains(const std::vector<std::string>& list, const std::string& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

} // namespace letterloft
