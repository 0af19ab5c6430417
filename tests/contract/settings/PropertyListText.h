#pragma once

#include <string>

namespace letterloft {

// An XML property list with this at its top.
inline std::string propertyListWith(const std::string& value) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + value + "</plist>\n";
}

} // namespace letterloft
