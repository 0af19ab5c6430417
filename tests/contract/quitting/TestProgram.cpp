// A program to be found and asked to quit. It writes one line for everything that happens to it, "ready PID" first.
//
// sigterm=default|handle|ignore|block      what SIGTERM does to it; "handle" ends it in an orderly way
// windows=N on-close=close|ask|ignore|hide what its windows do when asked to close; it ends with the last one. With
//                                          none of them it is connected to the display nonetheless
// class=NAME                               of the first window, instead of "Tester"
// no-delete                                its windows do not take the request at all
// modal                                    the first window has a dialog, which takes the request too; while it stands
//                                          the window drops the request. Agreeing closes it, refusing asks over it
// bus=ID on-quit=quit|ask|nothing|hang     an application on the session bus with a "quit" action
// name                                     it owns ID as its well-known name
// no-quit | quit-disabled                  it lists no such action, or one that can't be used
// children=N                               starts itself that often, as browsers do for pages; those end with it
// heir                                     starts itself once more, to stay, when SIGTERM comes, which it handles
// journal=FILE item=PATH                   its lines are added to a file, and the last tells whether PATH is there
//
// SIGUSR1 agrees to the question that stands, or ends it; SIGUSR2 refuses.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gio/gio.h>
#include <glib-unix.h>
#include <map>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace {

constexpr xcb_window_t noWindow = XCB_WINDOW_NONE;

void say(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
}

void startSelf(const char* option) {
    if (fork() == 0) {
        execl("/proc/self/exe", program_invocation_name, option, nullptr);
        _exit(127);
    }
}

class Program {
public:
    explicit Program(std::map<std::string, std::string> options) : options_{std::move(options)} {}

    int run() {
        if (has("journal") && std::freopen(option("journal").c_str(), "a", stdout) == nullptr) return 2;
        if (has("child")) prctl(PR_SET_PDEATHSIG, SIGKILL);
        prepareSignals();
        for (int i = 0; i < std::atoi(option("children").c_str()); ++i)
            startSelf("child");
        if (has("windows")) connectToDisplay();
        for (int i = 0; i < std::atoi(option("windows").c_str()); ++i)
            windows_.push_back(makeWindow(noWindow));
        if (has("modal")) dialog_ = makeWindow(windows_.front());
        if (has("bus")) exportApplication();
        say(has("journal") ? "started" : "ready " + std::to_string(getpid()));
        if (option("on-quit") == "hang") {
            for (;;)
                pause();
        }
        g_main_loop_run(loop_);
        if (has("item")) say(std::filesystem::exists(option("item")) ? "ended-with-item" : "ended-without-item");
        return 0;
    }

private:
    bool has(const std::string& name) const { return options_.count(name) != 0; }
    std::string option(const std::string& name) const { return has(name) ? options_.at(name) : std::string{}; }

    void prepareSignals() {
        const std::string reaction = option("sigterm");
        if (reaction == "ignore") std::signal(SIGTERM, SIG_IGN);
        if (reaction == "handle" || has("heir")) g_unix_signal_add(SIGTERM, &Program::sigtermCame, this);
        if (reaction == "block") {
            sigset_t set;
            sigemptyset(&set);
            sigaddset(&set, SIGTERM);
            sigprocmask(SIG_BLOCK, &set, nullptr);
        }
        g_unix_signal_add(SIGUSR1, &Program::userAgreed, this);
        g_unix_signal_add(SIGUSR2, &Program::userRefused, this);
    }

    xcb_atom_t atom(const char* name) {
        auto* reply = xcb_intern_atom_reply(
            server_, xcb_intern_atom(server_, 0, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr);
        const xcb_atom_t found = reply->atom;
        std::free(reply);
        return found;
    }

    void connectToDisplay() {
        server_ = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(server_) != 0) std::exit(3);
        protocols_ = atom("WM_PROTOCOLS");
        deleteWindow_ = atom("WM_DELETE_WINDOW");
        g_unix_fd_add(xcb_get_file_descriptor(server_), G_IO_IN, &Program::displayToRead, this);
    }

    xcb_window_t makeWindow(xcb_window_t owner) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(server_)).data;
        const xcb_window_t window = xcb_generate_id(server_);
        xcb_create_window(server_, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 50, 50, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
        const std::string named = windows_.empty() && has("class") ? option("class") : "Tester";
        const std::string both = std::string{"main"} + '\0' + named + '\0';
        setText(window, "WM_CLASS", both);
        const pid_t nobody = 1; // as a program in a container tells its own number there
        set(window, atom("_NET_WM_PID"), 32, 1, &nobody);
        if (!has("no-delete")) set(window, protocols_, 32, 1, &deleteWindow_);
        if (owner != noWindow) set(window, XCB_ATOM_WM_TRANSIENT_FOR, 32, 1, &owner);
        if (has("bus")) setText(window, "_GTK_APPLICATION_ID", option("bus"));
        xcb_map_window(server_, window);
        std::free(xcb_get_input_focus_reply(server_, xcb_get_input_focus(server_), nullptr)); // all done by now
        return window;
    }

    // Nobody looks at the type.
    void set(xcb_window_t window, xcb_atom_t property, std::uint8_t format, std::size_t size, const void* data) {
        xcb_change_property(server_, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_STRING, format,
                            static_cast<std::uint32_t>(size), data);
    }

    void setText(xcb_window_t window, const char* property, const std::string& text) {
        set(window, atom(property), 8, text.size(), text.data());
    }

    // A GApplication of its own object, so that the program speaks as GTK's programs do.
    void exportApplication() {
        application_ =
            g_application_new(option("bus").c_str(), has("name") ? GApplicationFlags{} : G_APPLICATION_NON_UNIQUE);
        if (!has("no-quit")) {
            GSimpleAction* quit = g_simple_action_new("quit", nullptr);
            g_simple_action_set_enabled(quit, has("quit-disabled") ? FALSE : TRUE);
            g_signal_connect(quit, "activate", G_CALLBACK(&Program::quitActivated), this);
            g_action_map_add_action(G_ACTION_MAP(application_), G_ACTION(quit));
        }
        g_signal_connect(application_, "activate", G_CALLBACK(&Program::activated), nullptr);
        if (g_application_register(application_, nullptr, nullptr) == FALSE) std::exit(4);
        for (const xcb_window_t window : windows_) {
            const char* name = g_dbus_connection_get_unique_name(g_application_get_dbus_connection(application_));
            setText(window, "_GTK_UNIQUE_BUS_NAME", name);
            setText(window, "_GTK_APPLICATION_OBJECT_PATH", g_application_get_dbus_object_path(application_));
        }
        if (server_ != nullptr) xcb_flush(server_);
    }

    void askToClose(xcb_window_t window) {
        const auto number = std::find(windows_.begin(), windows_.end(), window) - windows_.begin() + 1;
        if (dialog_ != noWindow) return say("dropped");
        say(windows_.size() == 1 ? "asked" : "asked " + std::to_string(number));
        const std::string reaction = option("on-close");
        if (reaction == "close") close(window);
        if (reaction == "hide") {
            xcb_unmap_window(server_, window);
            xcb_flush(server_);
        }
        if (reaction == "ask") ask(window);
    }

    void ask(std::optional<xcb_window_t> about) {
        asking_ = about;
        question_ = makeWindow(about.value_or(noWindow));
        say("question");
    }

    void close(xcb_window_t window) {
        xcb_destroy_window(server_, window);
        xcb_flush(server_);
        std::replace(windows_.begin(), windows_.end(), window, noWindow);
        if (std::count(windows_.begin(), windows_.end(), noWindow) == std::ssize(windows_)) g_main_loop_quit(loop_);
    }

    static gboolean sigtermCame(gpointer data) {
        auto* self = static_cast<Program*>(data);
        say("sigterm");
        if (self->has("heir")) startSelf("left");
        g_main_loop_quit(self->loop_);
        return G_SOURCE_REMOVE;
    }

    static gboolean userAgreed(gpointer data) {
        auto* self = static_cast<Program*>(data);
        xcb_destroy_window(self->server_, self->question_); // if there is one
        if (self->dialog_ != noWindow) {
            self->close(std::exchange(self->dialog_, noWindow));
        } else if (self->asking_) {
            self->close(*self->asking_);
        } else {
            g_main_loop_quit(self->loop_);
        }
        return G_SOURCE_CONTINUE;
    }

    static gboolean userRefused(gpointer data) {
        auto* self = static_cast<Program*>(data);
        if (self->dialog_ != noWindow) {
            self->ask(self->dialog_);
        } else {
            xcb_destroy_window(self->server_, self->question_);
            xcb_flush(self->server_);
            say("refused");
        }
        return G_SOURCE_CONTINUE;
    }

    static void activated(GApplication* /*application*/, gpointer /*data*/) { say("activated"); }

    static void quitActivated(GSimpleAction* /*action*/, GVariant* /*parameter*/, gpointer data) {
        auto* self = static_cast<Program*>(data);
        say("quit");
        if (self->option("on-quit") == "quit") g_main_loop_quit(self->loop_);
        if (self->option("on-quit") == "ask") self->ask(std::nullopt);
    }

    static gboolean displayToRead(gint /*descriptor*/, GIOCondition /*condition*/, gpointer data) {
        auto* self = static_cast<Program*>(data);
        while (auto* event = xcb_poll_for_event(self->server_)) {
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
                const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event);
                if (message->data.data32[0] == self->deleteWindow_) self->askToClose(message->window);
            }
            std::free(event);
        }
        if (xcb_connection_has_error(self->server_) == 0) return G_SOURCE_CONTINUE;
        if (self->has("journal")) std::exit(1);
        return G_SOURCE_REMOVE;
    }

    std::map<std::string, std::string> options_;
    GMainLoop* loop_ = g_main_loop_new(nullptr, FALSE);
    GApplication* application_ = nullptr;
    xcb_connection_t* server_ = nullptr;
    xcb_atom_t protocols_ = XCB_ATOM_NONE;
    xcb_atom_t deleteWindow_ = XCB_ATOM_NONE;
    std::vector<xcb_window_t> windows_;
    xcb_window_t dialog_ = noWindow;
    xcb_window_t question_ = noWindow;
    std::optional<xcb_window_t> asking_;
};

} // namespace

int main(int count, char** arguments) {
    std::map<std::string, std::string> options;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        const std::size_t equals = std::min(argument.find('='), argument.size());
        options[argument.substr(0, equals)] = argument.substr(std::min(equals + 1, argument.size()));
    }
    _exit(Program{std::move(options)}.run()); // what it holds ends with it
}
