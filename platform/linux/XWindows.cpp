#include "platform/linux/XWindows.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <xcb/res.h>
#include <xcb/xcb.h>

namespace letterloft {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); } // as xcb's replies are let go of
};

template <typename Value>
using Reply = std::unique_ptr<Value, Free>;

enum Atom : std::size_t {
    wmProtocols,
    wmDeleteWindow,
    wmState,
    windowType,
    windowTypeDialog,
    supportingWindow,
    clientList,
    gtkApplicationId,
    gtkUniqueBusName,
    gtkObjectPath,
    atomCount
};

constexpr std::array<std::string_view, atomCount> atomNames = {
    "WM_PROTOCOLS",
    "WM_DELETE_WINDOW",
    "WM_STATE",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_CLIENT_LIST",
    "_GTK_APPLICATION_ID",
    "_GTK_UNIQUE_BUS_NAME",
    "_GTK_APPLICATION_OBJECT_PATH",
};

std::string textOf(const xcb_get_property_reply_t* property) {
    if (property == nullptr || property->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(property)),
            static_cast<std::size_t>(xcb_get_property_value_length(property))};
}

std::vector<std::uint32_t> numbersOf(const xcb_get_property_reply_t* property) {
    if (property == nullptr || property->format != 32) return {};
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(property));
    return {first, first + xcb_get_property_value_length(property) / 4};
}

bool holds(const std::vector<std::uint32_t>& numbers, std::uint32_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

pid_t pidOf(xcb_res_query_client_ids_reply_t* reply) {
    if (reply == nullptr) return 0;
    for (auto id = xcb_res_query_client_ids_ids_iterator(reply); id.rem > 0; xcb_res_client_id_value_next(&id)) {
        if ((id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 &&
            xcb_res_client_id_value_value_length(id.data) > 0) {
            return static_cast<pid_t>(*xcb_res_client_id_value_value(id.data));
        }
    }
    return 0;
}

} // namespace

struct XWindows::Connection {
    Connection();
    ~Connection() { xcb_disconnect(server); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool isBroken() const { return xcb_connection_has_error(server) != 0; }

    xcb_get_property_cookie_t ask(xcb_window_t window, xcb_atom_t property) const {
        constexpr std::uint32_t longestInWords = 65536;
        return xcb_get_property(server, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longestInWords);
    }

    Reply<xcb_get_property_reply_t> answer(xcb_get_property_cookie_t cookie) const {
        return Reply<xcb_get_property_reply_t>{xcb_get_property_reply(server, cookie, nullptr)};
    }

    struct Question {
        xcb_window_t id;
        xcb_get_property_cookie_t wmClass;
        xcb_get_property_cookie_t transientFor;
        xcb_get_property_cookie_t protocols;
        xcb_get_property_cookie_t type;
        xcb_get_property_cookie_t applicationId;
        xcb_get_property_cookie_t uniqueBusName;
        xcb_get_property_cookie_t objectPath;
        xcb_res_query_client_ids_cookie_t pid;
    };

    void nameAtoms();
    bool canTellPids() const;
    bool hasWindowManager() const;
    std::vector<xcb_window_t> managedWindows() const;
    std::vector<xcb_window_t> childrenThatAreClients() const;
    Question askAbout(xcb_window_t id) const;
    Window windowFrom(const Question& question) const;
    bool takeQueuedNotices() const;
    std::vector<Window> describe(const std::vector<xcb_window_t>& ids) const;

    xcb_connection_t* server;
    xcb_window_t root = XCB_WINDOW_NONE;
    std::array<xcb_atom_t, atomCount> atoms{};
    bool tellsPids = false;
};

XWindows::Connection::Connection() : server{nullptr} {
    int screenNumber = 0;
    server = xcb_connect(nullptr, &screenNumber);
    if (isBroken()) return;
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(server));
    for (; screen.rem > 1 && screenNumber > 0; --screenNumber)
        xcb_screen_next(&screen);
    root = screen.data->root;
    nameAtoms();
    tellsPids = canTellPids();
}

void XWindows::Connection::nameAtoms() {
    std::array<xcb_intern_atom_cookie_t, atomCount> cookies{};
    for (std::size_t i = 0; i < atomCount; ++i) {
        cookies.at(i) =
            xcb_intern_atom(server, 0, static_cast<std::uint16_t>(atomNames.at(i).size()), atomNames.at(i).data());
    }
    for (std::size_t i = 0; i < atomCount; ++i) {
        const Reply<xcb_intern_atom_reply_t> reply{xcb_intern_atom_reply(server, cookies.at(i), nullptr)};
        if (reply) atoms.at(i) = reply->atom;
    }
}

bool XWindows::Connection::canTellPids() const {
    const auto* extension = xcb_get_extension_data(server, &xcb_res_id);
    if (extension == nullptr || extension->present == 0) return false;
    const Reply<xcb_res_query_version_reply_t> version{
        xcb_res_query_version_reply(server, xcb_res_query_version(server, 1, 2), nullptr)};
    return version &&
           std::pair{version->server_major, version->server_minor} >= std::pair<std::uint16_t, std::uint16_t>{1, 2};
}

// A manager that died leaves its list on the root window, but not the window that vouches for it (EWMH 1.5,
// _NET_SUPPORTING_WM_CHECK).
bool XWindows::Connection::hasWindowManager() const {
    const auto check = numbersOf(answer(ask(root, atoms[supportingWindow])).get());
    if (check.empty()) return false;
    return numbersOf(answer(ask(check.front(), atoms[supportingWindow])).get()) == check;
}

// _NET_CLIENT_LIST is in the order of first mapping; the stacking list is not.
std::vector<xcb_window_t> XWindows::Connection::managedWindows() const {
    if (!hasWindowManager()) return childrenThatAreClients();
    return numbersOf(answer(ask(root, atoms[clientList])).get());
}

std::vector<xcb_window_t> XWindows::Connection::childrenThatAreClients() const {
    const Reply<xcb_query_tree_reply_t> tree{xcb_query_tree_reply(server, xcb_query_tree(server, root), nullptr)};
    if (!tree) return {};
    const xcb_window_t* first = xcb_query_tree_children(tree.get());
    const std::vector<xcb_window_t> children{first, first + xcb_query_tree_children_length(tree.get())};
    std::vector<std::pair<xcb_get_window_attributes_cookie_t, xcb_get_property_cookie_t>> cookies;
    for (const xcb_window_t child : children) {
        cookies.emplace_back(xcb_get_window_attributes(server, child), ask(child, atoms[wmState]));
    }
    std::vector<xcb_window_t> clients;
    for (std::size_t i = 0; i < children.size(); ++i) {
        const Reply<xcb_get_window_attributes_reply_t> attributes{
            xcb_get_window_attributes_reply(server, cookies[i].first, nullptr)};
        const auto state = numbersOf(answer(cookies[i].second).get());
        if (!attributes || attributes->override_redirect != 0 || attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) {
            continue;
        }
        // A manager without that list unmaps what is iconified, and says so (ICCCM 4.1.3.1; 0 is withdrawn).
        const bool isIconified = !state.empty() && state.front() != 0;
        if (attributes->map_state == XCB_MAP_STATE_VIEWABLE || isIconified) clients.push_back(children[i]);
    }
    return clients;
}

XWindows::Connection::Question XWindows::Connection::askAbout(xcb_window_t id) const {
    const xcb_res_client_id_spec_t spec{id, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    return {.id = id,
            .wmClass = ask(id, XCB_ATOM_WM_CLASS),
            .transientFor = ask(id, XCB_ATOM_WM_TRANSIENT_FOR),
            .protocols = ask(id, atoms[wmProtocols]),
            .type = ask(id, atoms[windowType]),
            .applicationId = ask(id, atoms[gtkApplicationId]),
            .uniqueBusName = ask(id, atoms[gtkUniqueBusName]),
            .objectPath = ask(id, atoms[gtkObjectPath]),
            .pid = tellsPids ? xcb_res_query_client_ids(server, 1, &spec) : xcb_res_query_client_ids_cookie_t{}};
}

XWindows::Window XWindows::Connection::windowFrom(const Question& question) const {
    Window window;
    window.id = question.id;
    if (tellsPids) {
        const Reply<xcb_res_query_client_ids_reply_t> reply{
            xcb_res_query_client_ids_reply(server, question.pid, nullptr)};
        window.pid = pidOf(reply.get());
    }
    const std::string wmClass = textOf(answer(question.wmClass).get());
    const std::size_t half = std::min(wmClass.find('\0'), wmClass.size());
    window.instanceName = wmClass.substr(0, half);
    if (half < wmClass.size()) window.className = wmClass.substr(half + 1, wmClass.find('\0', half + 1) - half - 1);
    const auto owner = numbersOf(answer(question.transientFor).get());
    window.transientFor = owner.empty() ? 0 : owner.front();
    window.takesDeleteRequest = holds(numbersOf(answer(question.protocols).get()), atoms[wmDeleteWindow]);
    window.isDialog = holds(numbersOf(answer(question.type).get()), atoms[windowTypeDialog]);
    window.applicationId = textOf(answer(question.applicationId).get());
    window.uniqueBusName = textOf(answer(question.uniqueBusName).get());
    window.applicationObjectPath = textOf(answer(question.objectPath).get());
    return window;
}

std::vector<XWindows::Window> XWindows::Connection::describe(const std::vector<xcb_window_t>& ids) const {
    std::vector<Question> questions; // all before the first answer: one round trip for all windows
    for (const xcb_window_t id : ids)
        questions.push_back(askAbout(id));
    std::vector<Window> windows;
    for (const Question& question : questions)
        windows.push_back(windowFrom(question));
    return windows;
}

// What came in together with an answer does not make the descriptor readable again.
bool XWindows::Connection::takeQueuedNotices() const {
    bool any = false;
    while (Reply<xcb_generic_event_t>{xcb_poll_for_queued_event(server)})
        any = true;
    return any;
}

XWindows::XWindows() : connection_{std::make_unique<Connection>()} {}

XWindows::~XWindows() = default;

bool XWindows::isConnected() const { return !connection_->isBroken(); }

std::vector<XWindows::Window> XWindows::clientWindows() {
    if (!isConnected()) return {};
    std::vector<Window> windows;
    do
        windows = connection_->describe(connection_->managedWindows());
    while (connection_->takeQueuedNotices());
    return isConnected() ? windows : std::vector<Window>{};
}

void XWindows::requestClose(const Window& window) {
    if (!isConnected()) return;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window.id;
    message.type = connection_->atoms[wmProtocols];
    message.data.data32[0] = connection_->atoms[wmDeleteWindow];
    message.data.data32[1] = XCB_CURRENT_TIME;
    std::array<char, 32> bytes{}; // the size of every event, which xcb_send_event reads
    static_assert(sizeof message == sizeof bytes);
    std::copy_n(reinterpret_cast<const char*>(&message), sizeof message, bytes.begin());
    xcb_send_event(connection_->server, 0, window.id, XCB_EVENT_MASK_NO_EVENT, bytes.data());
    xcb_flush(connection_->server);
}

void XWindows::noticeChanges() {
    if (!isConnected()) return;
    const std::uint32_t events =
        connection_->hasWindowManager() ? XCB_EVENT_MASK_PROPERTY_CHANGE : XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_->server, connection_->root, XCB_CW_EVENT_MASK, &events);
    xcb_flush(connection_->server);
}

int XWindows::descriptor() const { return xcb_get_file_descriptor(connection_->server); }

bool XWindows::takeNotices() {
    while (Reply<xcb_generic_event_t>{xcb_poll_for_event(connection_->server)}) {
    }
    return isConnected();
}

} // namespace letterloft
