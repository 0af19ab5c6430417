#include "storage/SettingsKeys.h"

#include "storage/SupportFolder.h"

namespace letterloft::keys {

std::vector<std::string> mailItems(const std::string& home) {
    return {expandedTilde("~/Library/Preferences/com.apple.mail.plist", home), expandedTilde("~/Library/Mail", home),
            expandedTilde("~/Library/Mail Downloads", home)};
}

} // namespace letterloft::keys
