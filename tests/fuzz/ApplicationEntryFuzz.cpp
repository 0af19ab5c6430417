// What describes an application: a desktop entry, and a bundle's property list of either kind.
#include "platform/linux/ApplicationMatcher.h"
#include "tests/contract/quitting/Desktop.h"

#include <cstdint>
#include <string>

using namespace letterloft;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Desktop desktop;
    const std::string text{reinterpret_cast<const char*>(data), size};
    const ApplicationMatcher entry{ApplicationEntry::at(desktop.write("applications/mail.desktop", text))};
    desktop.write("Mail.app/Resources/Info-gnustep.plist", text);
    const ApplicationMatcher bundle{ApplicationEntry::at(desktop.home() + "/Mail.app")};
    (void)entry.startsTheSame(bundle.entry());
    return 0;
}
