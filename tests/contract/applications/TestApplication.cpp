// An application to be found. Tells "ready PID" once it is up, in each of its processes, and ends upon SIGTERM.
//
// children=N   starts itself that often, as browsers do for their pages; those end with it
// refork       goes on as a process that nobody waits for, as servers do
// heir         starts itself once more when it is asked to end; that one stays until SIGUSR1
// Anything else is ignored.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void startSelf(const char* file, const char* option) {
    if (fork() == 0) {
        execl(file, file, option, nullptr);
        _exit(127);
    }
}

void waitFor(int signal) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    int got = 0;
    sigwait(&set, &got);
}

/// Returns in the process left behind, once the first one has ended.
void goOnAsAnOrphan() {
    const int first = static_cast<int>(syscall(SYS_pidfd_open, getpid(), 0));
    if (fork() != 0) std::_Exit(0);
    setsid();
    pollfd end{first, POLLIN, 0};
    while (poll(&end, 1, -1) != 1) {
    }
    close(first);
}

} // namespace

int main(int count, char** arguments) {
    int children = 0;
    bool isHeir = false;
    bool leavesHeir = false;
    for (int i = 1; i < count; ++i) {
        if (std::strncmp(arguments[i], "children=", 9) == 0) children = std::atoi(arguments[i] + 9);
        if (std::strcmp(arguments[i], "child") == 0) prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (std::strcmp(arguments[i], "is-heir") == 0) isHeir = true;
        if (std::strcmp(arguments[i], "heir") == 0) leavesHeir = true;
        if (std::strcmp(arguments[i], "refork") == 0) goOnAsAnOrphan();
    }
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGUSR1);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    for (int i = 0; i < children; ++i)
        startSelf(arguments[0], "child");
    std::printf("ready %d\n", static_cast<int>(getpid()));
    std::fflush(stdout);
    waitFor(isHeir ? SIGUSR1 : SIGTERM);
    if (leavesHeir) startSelf(arguments[0], "is-heir");
    return 0;
}
