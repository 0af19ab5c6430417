// What proc(5) tells of a process: its files, parted by lines "--", in the order below. The command line and the
// environment can be anything; the rest is the kernel's own, but for the name in "stat" and the units in "cgroup".
#include "platform/linux/ApplicationMatcher.h"
#include "tests/contract/quitting/Desktop.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unistd.h>

using namespace letterloft;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Desktop desktop;
    static const ApplicationMatcher mail{ApplicationEntry::at(
        desktop.write("applications/org.mail.desktop", "[Desktop Entry]\nExec=sh -c 'python3 /opt/mail'\n"))};
    std::string rest{reinterpret_cast<const char*>(data), size};
    for (const char* file : {"stat", "cmdline", "environ", "cgroup", "status", "root/.flatpak-info"}) {
        const auto end = std::min(rest.find("\n--\n"), rest.size());
        desktop.write(std::string{"proc/10/"} + file, rest.substr(0, end));
        rest.erase(0, std::min(end + 4, rest.size()));
    }
    const ProcessTable table{getuid(), desktop.home() + "/proc"};
    for (const auto& [pid, process] : table.processes()) {
        (void)mail.runsProgram(process, table);
        (void)mail.isWrapper(process, table);
        (void)mail.isMarked(process, table);
        (void)mail.isMarkedForAnother(process);
        (void)table.flatpakName(process);
        (void)table.ancestorsOf(process);
    }
    return 0;
}
