#include "platform/linux/CopyNotice.h"

#include "platform/linux/GlibPointers.h"
#include "platform/linux/SessionBusAddress.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <algorithm>
#include <gio/gio.h>

namespace letterloft {

namespace {

using namespace std::chrono_literals;

constexpr int replyTimeoutInMilliseconds = 1000;
constexpr int shownForMilliseconds = 10000; // should this program die, it goes by itself
constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* object = "/org/freedesktop/Notifications";

GDBusConnection* connectedAlone() {
    if (!isSessionBusAnnounced()) return nullptr;
    const GlibPointer<gchar> address{g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, nullptr)};
    if (!address) return nullptr;
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return g_dbus_connection_new_for_address_sync(address.get(), flags, nullptr, nullptr, nullptr);
}

} // namespace

// The notification service, as long as one notification stands.
class CopyNotice::Service {
public:
    Service() : context_{g_main_context_new()} {
        g_main_context_push_thread_default(context_);
        connection_ = connectedAlone();
        g_main_context_pop_thread_default(context_);
    }
    ~Service() {
        if (connection_ != nullptr) withdraw();
        g_clear_object(&connection_);
        g_main_context_unref(context_);
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    // Takes in what has come, and shows the notification unless the service owes an answer or has failed.
    void show(const std::string& summary, const std::string& body) {
        while (g_main_context_iteration(context_, FALSE) != FALSE) {
        }
        if (connection_ == nullptr || failed_ || waiting_) return;
        GVariantBuilder hints;
        g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
        g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(0));
        g_variant_builder_add(&hints, "{sv}", "category", g_variant_new_string("transfer"));
        g_variant_builder_add(&hints, "{sv}", "transient", g_variant_new_boolean(TRUE));
        const std::string text = escaped(summary);
        GVariant* arguments = g_variant_new("(susssasa{sv}i)", "Letterloft", id_, "org.letterloft.Letterloft",
                                            text.c_str(), body.c_str(), nullptr, &hints, shownForMilliseconds);
        waiting_ = true;
        g_main_context_push_thread_default(context_);
        g_dbus_connection_call(connection_, service, object, service, "Notify", arguments, G_VARIANT_TYPE("(u)"),
                               G_DBUS_CALL_FLAGS_NONE, replyTimeoutInMilliseconds, nullptr, shown, this);
        g_main_context_pop_thread_default(context_);
    }

private:
    static void shown(GObject* connection, GAsyncResult* result, gpointer self) {
        auto* here = static_cast<Service*>(self);
        const GlibPointer<GVariant> reply{
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, nullptr)};
        here->waiting_ = false;
        here->failed_ = reply == nullptr;
        if (reply) g_variant_get(reply.get(), "(u)", &here->id_);
    }

    void withdraw() {
        while (waiting_)
            g_main_context_iteration(context_, TRUE);
        if (id_ != 0)
            g_dbus_connection_call(connection_, service, object, service, "CloseNotification",
                                   g_variant_new("(u)", id_), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr,
                                   nullptr, nullptr);
        g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
    }

    GMainContext* context_;
    GDBusConnection* connection_ = nullptr;
    guint32 id_ = 0;
    bool waiting_ = false;
    bool failed_ = false;
};

CopyNotice::CopyNotice() = default;

CopyNotice::~CopyNotice() = default;

void CopyNotice::began(const std::string& item, std::uint64_t totalBytes) {
    name_ = lastComponent(item);
    totalBytes_ = totalBytes;
    nextShown_ = std::chrono::steady_clock::now() + 2s;
}

void CopyNotice::progressed(std::uint64_t bytes) {
    const auto now = std::chrono::steady_clock::now();
    if (now < nextShown_) return;
    nextShown_ = now + 1s;
    if (!service_) service_ = std::make_unique<Service>();
    const GlibPointer<gchar> done{g_format_size(bytes)};
    const GlibPointer<gchar> total{g_format_size(std::max(bytes, totalBytes_))};
    service_->show(filled("Moving %@", {name_}), filled("%@ of %@", {done.get(), total.get()}));
}

void CopyNotice::ended() { service_.reset(); }

} // namespace letterloft
