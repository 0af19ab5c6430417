#include "platform/linux/ActivationSocket.h"

#include "storage/SupportFolder.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace letterloft {

namespace {

// A burst of starts, all of which want to be heard.
constexpr int backlog = 256;

constexpr int socketType = SOCK_STREAM | SOCK_CLOEXEC;

// The socket's address by way of its folder: an address holds 107 bytes at most (unix(7)), a path more.
class Address {
public:
    explicit Address(const std::string& path)
        : folder_{open(path.substr(0, path.rfind('/') + 1).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)} {
        const std::string near = "/proc/self/fd/" + std::to_string(folder_) + "/" + lastComponent(path);
        fits_ = near.size() < sizeof address_.sun_path;
        address_.sun_family = AF_UNIX;
        if (fits_) std::memcpy(address_.sun_path, near.c_str(), near.size() + 1);
    }
    ~Address() {
        if (folder_ >= 0) close(folder_);
    }
    Address(const Address&) = delete;
    Address& operator=(const Address&) = delete;

    bool isUsable() const { return folder_ >= 0 && fits_; }
    const sockaddr* data() const { return reinterpret_cast<const sockaddr*>(&address_); }
    static socklen_t size() { return sizeof(sockaddr_un); }

private:
    int folder_;
    sockaddr_un address_{};
    bool fits_ = false;
};

bool isOurUser(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == getuid();
}

bool listenAt(int socket, const std::string& path) {
    const Address address{path};
    if (!address.isUsable()) return false;
    unlink(path.c_str());
    // Decides the mode that the file is made with, so that nobody can come in before it has the right one.
    const mode_t before = umask(S_IXUSR | S_IRWXG | S_IRWXO);
    const bool isBound = bind(socket, address.data(), Address::size()) == 0;
    umask(before);
    return isBound && listen(socket, backlog) == 0;
}

} // namespace

ActivationSocket::ActivationSocket(std::string path)
    : path_{std::move(path)}, socket_{::socket(AF_UNIX, socketType | SOCK_NONBLOCK, 0)} {
    if (socket_ >= 0 && listenAt(socket_, path_)) return;
    status_ = Status::failure("A second start can't reach this one: no socket at " + path_ + ": " +
                              std::strerror(errno)); // NOLINT(concurrency-mt-unsafe): one thread
}

ActivationSocket::~ActivationSocket() {
    if (socket_ < 0) return;
    if (status_) unlink(path_.c_str());
    close(socket_);
}

void ActivationSocket::serve(DescriptorWatcher& watcher, std::function<void()> asked) {
    if (!status_) return;
    asked_ = std::move(asked);
    watch_ = watcher.watchReadable(socket_, [this] { acceptAll(); });
}

void ActivationSocket::acceptAll() {
    bool hasAsked = false;
    while (true) {
        const int connection = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) break;
        hasAsked = isOurUser(connection) || hasAsked;
        close(connection);
    }
    if (hasAsked) asked_();
}

bool ActivationSocket::ask(const std::string& path) {
    const Address address{path};
    const int asking = address.isUsable() ? ::socket(AF_UNIX, socketType, 0) : -1;
    if (asking < 0) return false;
    const bool heard = connect(asking, address.data(), Address::size()) == 0;
    close(asking);
    return heard;
}

} // namespace letterloft
