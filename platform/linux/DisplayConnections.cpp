#include "platform/linux/DisplayConnections.h"

#include "platform/linux/ProgramFiles.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace letterloft {

namespace {

enum class Display { x11, wayland };

// The client's end of each connection to a display, by its inode.
using ClientSockets = std::map<std::uint32_t, Display>;

std::optional<Display> displayOfAddress(std::string_view address) {
    if (address.find(".X11-unix/X") != std::string_view::npos) return Display::x11;
    const std::string_view name = address.substr(address.rfind('/') + 1);
    if (name.rfind("wayland-", 0) == 0) return Display::wayland;
    return std::nullopt;
}

// One socket of the dump. The server's end carries the address and names its peer, also one of another network
// namespace, where a dump of the client's own end would not reach.
void noteSocket(nlmsghdr* message, ClientSockets& clients) {
    auto* socket = static_cast<unix_diag_msg*>(NLMSG_DATA(message));
    auto left = static_cast<unsigned>(message->nlmsg_len - NLMSG_LENGTH(sizeof(unix_diag_msg)));
    std::optional<Display> display;
    std::uint32_t peer = 0;
    for (auto* part = reinterpret_cast<rtattr*>(socket + 1); RTA_OK(part, left); part = RTA_NEXT(part, left)) {
        const auto* data = static_cast<const char*>(RTA_DATA(part));
        if (part->rta_type == UNIX_DIAG_NAME) display = displayOfAddress({data, RTA_PAYLOAD(part)});
        if (part->rta_type == UNIX_DIAG_PEER) std::memcpy(&peer, data, sizeof peer);
    }
    if (display && peer != 0) clients[peer] = *display;
}

bool requestDump(int netlink) {
    struct {
        nlmsghdr header;
        unix_diag_req request;
    } message{};
    message.header.nlmsg_len = sizeof message;
    message.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    message.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    message.request.sdiag_family = AF_UNIX;
    message.request.udiag_states = ~0U;
    message.request.udiag_show = UDIAG_SHOW_NAME | UDIAG_SHOW_PEER;
    return send(netlink, &message, sizeof message, 0) == static_cast<ssize_t>(sizeof message);
}

std::optional<ClientSockets> readDump(int netlink) {
    ClientSockets clients;
    alignas(nlmsghdr) std::array<char, 32768> buffer{};
    for (;;) {
        const ssize_t size = recv(netlink, buffer.data(), buffer.size(), 0);
        if (size <= 0) return std::nullopt;
        auto left = static_cast<unsigned>(size);
        for (auto* message = reinterpret_cast<nlmsghdr*>(buffer.data()); NLMSG_OK(message, left);
             message = NLMSG_NEXT(message, left)) {
            if (message->nlmsg_type == NLMSG_DONE) return clients;
            if (message->nlmsg_type == NLMSG_ERROR) return std::nullopt;
            noteSocket(message, clients);
        }
    }
}

// None where the kernel has no unix_diag.
std::optional<ClientSockets> displayClientSockets() {
    const int netlink = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    if (netlink < 0) return std::nullopt;
    std::optional<ClientSockets> clients;
    if (requestDump(netlink)) clients = readDump(netlink);
    close(netlink);
    return clients;
}

// A display reached over TCP, as from `ssh -X`, listens on one of the ports 6000 to 6063 (IANA, "x11").
void addRemoteDisplays(pid_t pid, ClientSockets& clients) {
    constexpr std::size_t longest = std::size_t{1} << 22;
    for (const char* table : {"/net/tcp", "/net/tcp6"}) {
        std::istringstream lines{headOfFile("/proc/" + std::to_string(pid) + table, longest).value_or("")};
        for (std::string line; std::getline(lines, line);) {
            std::istringstream fields{line};
            std::string slot, local, remote, skipped;
            std::uint32_t inode = 0;
            fields >> slot >> local >> remote;
            for (int i = 0; i < 6; ++i)
                fields >> skipped;
            fields >> inode;
            const std::string port = remote.substr(std::min(remote.rfind(':'), remote.size() - 1) + 1);
            if (fields && port >= "1770" && port <= "17AF") clients[inode] = Display::x11;
        }
    }
}

} // namespace

DisplayConnections DisplayConnections::ofProcess(pid_t pid) {
    std::optional<ClientSockets> clients = displayClientSockets();
    if (!clients) return {};
    addRemoteDisplays(pid, *clients);
    std::error_code failure;
    std::filesystem::directory_iterator descriptor{"/proc/" + std::to_string(pid) + "/fd", failure};
    if (failure) return {};
    DisplayConnections connections{.x11 = false, .wayland = false};
    for (; descriptor != std::filesystem::directory_iterator{}; descriptor.increment(failure)) {
        std::error_code gone; // a descriptor closed since is no connection
        const std::string target = std::filesystem::read_symlink(descriptor->path(), gone).string();
        if (target.rfind("socket:[", 0) != 0) continue;
        const auto client = clients->find(static_cast<std::uint32_t>(std::stoull(target.substr(8))));
        if (client == clients->end()) continue;
        (client->second == Display::x11 ? connections.x11 : connections.wayland) = true;
    }
    return failure ? DisplayConnections{} : connections;
}

} // namespace letterloft
