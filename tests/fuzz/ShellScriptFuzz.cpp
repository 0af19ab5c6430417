// A wrapper script, whoever wrote it, and the command lines found in it.
#include "platform/linux/ShellScript.h"
#include "platform/linux/StartedProgram.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace letterloft;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int onePlace = setenv("PATH", "/usr/bin", 1); // for programs, which is enough and quicker
    const std::string text{reinterpret_cast<const char*>(data), size};
    (void)commandsOfShellScript(text, "/opt/mail/bin/mailer");
    (void)programsStartedBy({"sh", "-c", text});
    return onePlace;
}
