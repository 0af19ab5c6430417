#include "platform/linux/GioLauncher.h"

#include "platform/linux/ApplicationEntry.h"
#include "platform/linux/GlibPointers.h"
#include "platform/linux/SessionBusAddress.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <csignal>
#include <fcntl.h>
#include <gio/gdesktopappinfo.h>
#include <unistd.h>

namespace letterloft {

namespace {

// What a program finds in its environment about how it was started itself is not true of what it starts.
constexpr const char* marksOfOurOwnStart[] = {"GIO_LAUNCHED_DESKTOP_FILE", "GIO_LAUNCHED_DESKTOP_FILE_PID",
                                              "DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"};

// Stands in for the standard streams; closed in the program that is started, once it has its copies.
class NullDevice {
public:
    NullDevice() : descriptor_{open("/dev/null", O_RDWR | O_CLOEXEC)} {}
    ~NullDevice() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    NullDevice(const NullDevice&) = delete;
    NullDevice& operator=(const NullDevice&) = delete;

    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

// GLib would start a session bus of its own to launch by where none is announced; an empty address keeps it from that.
class NoBusOfItsOwn {
public:
    NoBusOfItsOwn() : isNeeded_{!isSessionBusAnnounced()}, former_{g_strdup(g_getenv(variable))} {
        if (isNeeded_) g_setenv(variable, "", TRUE);
    }
    ~NoBusOfItsOwn() {
        if (isNeeded_ && former_) g_setenv(variable, former_.get(), TRUE);
        if (isNeeded_ && !former_) g_unsetenv(variable);
    }
    NoBusOfItsOwn(const NoBusOfItsOwn&) = delete;
    NoBusOfItsOwn& operator=(const NoBusOfItsOwn&) = delete;

private:
    static constexpr const char* variable = "DBUS_SESSION_BUS_ADDRESS";
    bool isNeeded_;
    GlibPointer<gchar> former_;
};

// Runs in the new process between fork and exec, where only async-signal-safe calls are allowed (signal-safety(7)).
void detachFromUs(gpointer /*data*/) {
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGCHLD})
        std::signal(signal, SIG_DFL);
}

void notePid(GDesktopAppInfo* /*info*/, GPid pid, gpointer destination) { *static_cast<pid_t*>(destination) = pid; }

Status failure(const std::string& path, const GError* error) {
    const std::string reason = error != nullptr ? error->message : "no reason is known";
    return Status::failure("The application at " + path + " could not be started: " + reason);
}

// Without G_SPAWN_DO_NOT_REAP_CHILD GLib starts it through a child that ends at once, so it is no child of ours. It
// closes our descriptors in it, unless told otherwise.
constexpr GSpawnFlags spawnFlags = G_SPAWN_SEARCH_PATH;

Status startEntry(const std::string& path, pid_t& pid) {
    const GObjectPointer<GDesktopAppInfo> info{g_desktop_app_info_new_from_filename(path.c_str())};
    if (!info) return Status::failure("The desktop entry at " + path + " can't be started");
    const GObjectPointer<GAppLaunchContext> context{g_app_launch_context_new()};
    for (const char* mark : marksOfOurOwnStart)
        g_app_launch_context_unsetenv(context.get(), mark); // from here on it has an environment of its own
    const NoBusOfItsOwn noBus;
    const NullDevice null;
    GError* error = nullptr;
    const bool started = g_desktop_app_info_launch_uris_as_manager_with_fds(
                             info.get(), nullptr, context.get(), spawnFlags, detachFromUs, nullptr, notePid, &pid,
                             null.descriptor(), null.descriptor(), null.descriptor(), &error) != FALSE;
    const GlibPointer<GError> owned{error};
    return started ? Status::ok() : failure(path, error);
}

Status startFile(const std::string& path, std::vector<std::string> command, pid_t& pid) {
    std::vector<gchar*> arguments;
    for (std::string& word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    GlibPointer<gchar*> environment{g_get_environ()};
    for (const char* mark : marksOfOurOwnStart) {
        environment.reset(g_environ_unsetenv(environment.release(), mark));
    }
    const NullDevice null;
    GError* error = nullptr;
    const bool started =
        g_spawn_async_with_fds(nullptr, arguments.data(), environment.get(), spawnFlags, detachFromUs, nullptr, &pid,
                               null.descriptor(), null.descriptor(), null.descriptor(), &error) != FALSE;
    const GlibPointer<GError> owned{error};
    return started ? Status::ok() : failure(path, error);
}

} // namespace

GioLauncher::GioLauncher(SessionBus& bus, Log& log) : bus_{bus}, log_{log} {}

bool GioLauncher::launchApplication(const std::string& path) {
    const Status status = launch(path);
    if (!status) log_.write(filledForLog("%@", {status.sentence()}));
    return status.isOk();
}

Status GioLauncher::launch(const std::string& path) {
    const ApplicationEntry entry = ApplicationEntry::at(path);
    if (!entry.usable) return entry.usable;
    const bool isEntry = entry.kind == ApplicationEntry::Kind::desktopEntry;
    if (entry.dBusActivatable && bus_.isThere() && !bus_.isReachable(entry.identifier)) {
        return Status::failure("The application at " + path +
                               " could not be started: nothing on the session bus owns "
                               "or starts " +
                               entry.identifier);
    }
    pid_t pid = 0; // stays 0 where the session bus starts it
    Status status = isEntry ? startEntry(entry.path, pid) : startFile(path, entry.command, pid);
    if (status && pid != 0) bus_.moveToOwnScope(pid, isEntry ? entry.identifier : lastComponent(path));
    bus_.flush(); // an activation is only queued so far, and the event loop may never run again
    return status;
}

} // namespace letterloft
