#include "platform/linux/SessionBus.h"

#include "platform/linux/GlibPointers.h"
#include "platform/linux/SessionBusAddress.h"

#include <algorithm>
#include <chrono>

namespace letterloft {

namespace {

using std::chrono::steady_clock;

constexpr int busTimeoutInMilliseconds = 5000;
constexpr std::chrono::milliseconds programTimeout{1000};
constexpr const char* actionsInterface = "org.gtk.Actions";
constexpr const char* systemd = "org.freedesktop.systemd1";

std::vector<std::string> textsIn(GVariant* reply) {
    std::vector<std::string> texts;
    if (reply == nullptr) return texts;
    const GlibPointer<GVariant> list{g_variant_get_child_value(reply, 0)};
    for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
        const GlibPointer<GVariant> text{g_variant_get_child_value(list.get(), i)};
        texts.emplace_back(g_variant_get_string(text.get(), nullptr));
    }
    return texts;
}

// The reply to DescribeAll: for each action whether it is enabled, its parameter's type, its state.
bool describesUsableQuit(GVariant* reply) {
    const GlibPointer<GVariant> actions{g_variant_get_child_value(reply, 0)};
    const GlibPointer<GVariant> quit{g_variant_lookup_value(actions.get(), "quit", G_VARIANT_TYPE("(bgav)"))};
    if (!quit) return false;
    gboolean enabled = FALSE;
    const char* parameterType = nullptr;
    g_variant_get(quit.get(), "(b&g@av)", &enabled, &parameterType, nullptr);
    return enabled != FALSE && *parameterType == '\0';
}

// The characters that systemd's unit names keep; all others are written as "\x2d" (systemd.unit(5)).
std::string escapedForUnitName(const std::string& id) {
    std::string unit;
    for (const char c : id) {
        if (g_ascii_isalnum(c) || c == ':' || c == '_' || c == '.') {
            unit += c;
        } else {
            const GlibPointer<gchar> code{g_strdup_printf("\\x%02x", static_cast<unsigned char>(c))};
            unit += code.get();
        }
    }
    return unit;
}

} // namespace

SessionBus::SessionBus(Log& log) : log_{log} {}

SessionBus::~SessionBus() {
    if (connection_ != nullptr) g_object_unref(connection_);
}

// GIO's own launching uses the same shared connection, so that one flush covers both.
GDBusConnection* SessionBus::connection() {
    if (connection_ != nullptr && g_dbus_connection_is_closed(connection_) != FALSE) {
        g_object_unref(connection_);
        connection_ = nullptr;
    }
    if (connection_ == nullptr && isSessionBusAnnounced()) {
        connection_ = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
        if (connection_ != nullptr) g_dbus_connection_set_exit_on_close(connection_, FALSE);
    }
    if (connection_ == nullptr && !absenceLogged_) {
        absenceLogged_ = true;
        log_.write("There is no session bus: applications are asked to quit by their windows or by a signal.");
    }
    return connection_;
}

bool SessionBus::isThere() { return connection() != nullptr; }

// Calls the bus itself. Takes the arguments over; none on any failure.
GVariant* SessionBus::callBus(const char* method, GVariant* arguments, const char* replyType) {
    const GlibPointer<GVariant> kept{arguments == nullptr ? g_variant_ref_sink(g_variant_new("()"))
                                                          : g_variant_ref_sink(arguments)};
    if (connection() == nullptr) return nullptr;
    return g_dbus_connection_call_sync(connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus", method, kept.get(), G_VARIANT_TYPE(replyType),
                                       G_DBUS_CALL_FLAGS_NO_AUTO_START, busTimeoutInMilliseconds, nullptr, nullptr);
}

std::optional<pid_t> SessionBus::ownerPid(const std::string& name) {
    if (g_dbus_is_name(name.c_str()) == FALSE) return std::nullopt;
    const GlibPointer<GVariant> reply{callBus("GetConnectionUnixProcessID", g_variant_new("(s)", name.c_str()), "(u)")};
    if (!reply) return std::nullopt;
    guint32 pid = 0;
    g_variant_get(reply.get(), "(u)", &pid);
    return static_cast<pid_t>(pid);
}

SessionBus::Connections SessionBus::connectionsOf(const std::vector<pid_t>& pids) {
    Connections connections;
    const GlibPointer<GVariant> reply{callBus("ListNames", nullptr, "(as)")};
    const std::vector<std::string> names = textsIn(reply.get());
    for (const std::string& name : names) {
        if (name.front() != ':') continue;
        const std::optional<pid_t> pid = ownerPid(name);
        if (pid && std::find(pids.begin(), pids.end(), *pid) != pids.end()) connections[name];
    }
    if (connections.empty()) return connections;
    for (const std::string& name : names) {
        if (name.front() == ':') continue;
        const GlibPointer<GVariant> owner{callBus("GetNameOwner", g_variant_new("(s)", name.c_str()), "(s)")};
        if (!owner) continue;
        const char* uniqueName = nullptr;
        g_variant_get(owner.get(), "(&s)", &uniqueName);
        const auto connection = connections.find(uniqueName);
        if (connection != connections.end()) connection->second.push_back(name);
    }
    return connections;
}

bool SessionBus::isReachable(const std::string& name) {
    if (ownerPid(name)) return true;
    const GlibPointer<GVariant> reply{callBus("ListActivatableNames", nullptr, "(as)")};
    const std::vector<std::string> names = textsIn(reply.get());
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The rule is GApplication's, and the Desktop Entry Specification's for activation ("D-Bus Activation").
std::string SessionBus::objectPathForId(const std::string& applicationId) {
    std::string path = "/" + applicationId;
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

std::optional<SessionBus::ApplicationObject>
SessionBus::objectOfferingQuit(const std::vector<ApplicationObject>& objects) {
    if (connection() == nullptr) return std::nullopt;
    const auto deadline = steady_clock::now() + programTimeout;
    for (const ApplicationObject& object : objects) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - steady_clock::now());
        if (left.count() <= 0) break;
        if (g_variant_is_object_path(object.path.c_str()) == FALSE) continue;
        const GlibPointer<GVariant> reply{g_dbus_connection_call_sync(
            connection_, object.uniqueName.c_str(), object.path.c_str(), actionsInterface, "DescribeAll", nullptr,
            G_VARIANT_TYPE("(a{s(bgav)})"), G_DBUS_CALL_FLAGS_NO_AUTO_START, static_cast<int>(left.count()), nullptr,
            nullptr)};
        if (reply && describesUsableQuit(reply.get())) return object;
    }
    return std::nullopt;
}

void SessionBus::requestQuit(const ApplicationObject& object) {
    if (connection() == nullptr) return;
    // Without a callback the message says that no reply is expected.
    g_dbus_connection_call(
        connection_, object.uniqueName.c_str(), object.path.c_str(), actionsInterface, "Activate",
        g_variant_new("(s@av@a{sv})", "quit", g_variant_new("av", nullptr), g_variant_new("a{sv}", nullptr)), nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
    flush();
}

void SessionBus::moveToOwnScope(pid_t pid, const std::string& applicationId) {
    if (!ownerPid(systemd)) return;
    const std::string unit =
        "app-letterloft-" + escapedForUnitName(applicationId) + "-" + std::to_string(pid) + ".scope";
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE("a(sv)"));
    const auto process = static_cast<guint32>(pid);
    g_variant_builder_add(&properties, "(sv)", "PIDs",
                          g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, &process, 1, sizeof process));
    g_variant_builder_add(&properties, "(sv)", "CollectMode", g_variant_new_string("inactive-or-failed"));
    g_dbus_connection_call(
        connection_, systemd, "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager", "StartTransientUnit",
        g_variant_new("(ssa(sv)@a(sa(sv)))", unit.c_str(), "fail", &properties, g_variant_new("a(sa(sv))", nullptr)),
        nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
    flush();
}

void SessionBus::flush() {
    if (connection_ != nullptr) g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
}

} // namespace letterloft
