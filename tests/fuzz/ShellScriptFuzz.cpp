// A wrapper script, whoever wrote it, and the command lines found in it.
#include "platform/linux/ShellScript.h"
#include "platform/linux/StartedProgram.h"

#include <cstdint>
#include <string>

using namespace letterloft;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text{reinterpret_cast<const char*>(data), size};
    for (const auto& command : commandsOfShellScript(text, "/opt/mail/bin/mailer"))
        (void)programsStartedBy(command.words);
    (void)programsStartedBy({"sh", "-c", text});
    return 0;
}
