#include "platform/linux/CopyNotice.h"

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <vector>

namespace letterloft {

namespace {

using namespace std::chrono_literals;

// A notification service on a bus of its own. It answers only while this test waits for it.
class NotificationService {
public:
    NotificationService() : bus_{g_test_dbus_new(G_TEST_DBUS_NONE)} {
        g_test_dbus_up(bus_);
        const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        connection_ =
            g_dbus_connection_new_for_address_sync(g_test_dbus_get_bus_address(bus_), flags, nullptr, nullptr, nullptr);
    }
    ~NotificationService() {
        g_object_unref(connection_);
        g_test_dbus_down(bus_);
        g_object_unref(bus_);
    }
    NotificationService(const NotificationService&) = delete;
    NotificationService& operator=(const NotificationService&) = delete;

    void appear() {
        static const GDBusInterfaceVTable operations{called, nullptr, nullptr, {}};
        const char* description = "<node><interface name='org.freedesktop.Notifications'>"
                                  "<method name='Notify'><arg type='s'/><arg type='u'/><arg type='s'/><arg type='s'/>"
                                  "<arg type='s'/><arg type='as'/><arg type='a{sv}'/><arg type='i'/>"
                                  "<arg type='u' direction='out'/></method>"
                                  "<method name='CloseNotification'><arg type='u'/></method></interface></node>";
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(description, nullptr);
        g_dbus_connection_register_object(connection_, "/org/freedesktop/Notifications", node->interfaces[0],
                                          &operations, this, nullptr, nullptr);
        g_dbus_node_info_unref(node);
        GVariant* reply = g_dbus_connection_call_sync(connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                      "org.freedesktop.DBus", "RequestName",
                                                      g_variant_new("(su)", "org.freedesktop.Notifications", 0u),
                                                      nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        g_variant_unref(reply);
    }

    void serveUntil(std::size_t count) {
        while (calls.size() < count)
            g_main_context_iteration(nullptr, TRUE);
        g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
    }

    std::vector<std::string> calls;

private:
    static void called(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* method,
                       GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self) {
        auto& calls = static_cast<NotificationService*>(self)->calls;
        guint32 id = 0;
        const char* summary = "";
        const char* body = "";
        const bool notifies = g_variant_n_children(arguments) > 1;
        if (notifies)
            g_variant_get(arguments, "(&su&s&s&s@as@a{sv}i)", nullptr, &id, nullptr, &summary, &body, nullptr, nullptr,
                          nullptr);
        else
            g_variant_get(arguments, "(u)", &id);
        calls.push_back(std::string{method} + " " + std::to_string(id) + " " + summary + " " + body);
        g_dbus_method_invocation_return_value(invocation, notifies ? g_variant_new("(u)", 42u) : nullptr);
    }

    GTestDBus* bus_;
    GDBusConnection* connection_;
};

class CopyNoticeTest : public testing::Test {
protected:
    NotificationService service;
    std::chrono::steady_clock::time_point now{};
    CopyNotice notice{[this] { return now; }};
};

} // namespace

TEST_F(CopyNoticeTest, ShowsALongCopyBringsItUpToDateAndWithdrawsIt) {
    service.appear();
    notice.began("/home/user/<b>Mail\n", 4000000);
    notice.progressed(0);
    now += 2s;
    notice.progressed(1000000);
    service.serveUntil(1);
    EXPECT_EQ(service.calls[0].substr(0, 26), "Notify 0 Moving <b>Mail\\n ");
    // The answer comes by the notice's own connection, whenever it is next told something.
    for (std::size_t told = service.calls.size(); service.calls.size() == told;) {
        now += 1s;
        notice.progressed(2000000);
        g_main_context_iteration(nullptr, FALSE);
    }
    EXPECT_EQ(service.calls[1].substr(0, 10), "Notify 42 ");
    EXPECT_NE(service.calls[1].find("2.0"), std::string::npos) << service.calls[1];
    service.serveUntil(2);
    notice.ended();
    service.serveUntil(3);
    EXPECT_EQ(service.calls[2], "CloseNotification 42  ");
}

TEST_F(CopyNoticeTest, DoesNothingForAShortCopyOrWithoutAService) {
    notice.began("/item", 10);
    now += 1999ms;
    notice.progressed(10);
    notice.ended();
    notice.began("/item", 10);
    now += 2s;
    notice.progressed(5);
    now += 1s;
    notice.progressed(10);
    notice.ended();
    service.appear();
    notice.began("/item", 10);
    notice.ended();
    EXPECT_FALSE(g_main_context_pending(nullptr));
    EXPECT_TRUE(service.calls.empty());
}

} // namespace letterloft
