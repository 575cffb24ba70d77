// Unix stream sockets by their path.
#include "sim/core/unix_socket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace sim {

namespace {

constexpr int kBacklog = 128;
constexpr mode_t kPrivate = 0600;
char const* const kNew = ".new";  // behind the name of a socket that is not complete yet

// False with errno ENAMETOOLONG when the path does not fit into an address.
bool make_address(std::string const& path, sockaddr_un& address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

Descriptor open_socket() {
    return out_of_the_way(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

}  // namespace

std::size_t longest_socket_path() {
    return sizeof(sockaddr_un::sun_path) - 1 - std::strlen(kNew);
}

Descriptor connect_to(std::string const& path) {
    sockaddr_un address{};
    if (!make_address(path, address)) {
        return {};
    }
    Descriptor connection = open_socket();
    if (connection && ::connect(connection.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
        return {};
    }
    return connection;
}

Descriptor listen_on(std::string const& path, Error& error) {
    std::string const unfinished = path + kNew;
    sockaddr_un address{};
    Descriptor listener;
    if (make_address(unfinished, address)) {
        ::unlink(unfinished.c_str());
        listener = open_socket();
    }
    if (!listener || ::bind(listener.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0 ||
        ::chmod(unfinished.c_str(), kPrivate) != 0 || ::listen(listener.get(), kBacklog) != 0 ||
        std::rename(unfinished.c_str(), path.c_str()) != 0) {
        error = "cannot serve " + path + ": " + std::strerror(errno);
        return {};
    }
    return listener;
}

Descriptor accept_from(Descriptor const& listener) {
    Descriptor place = out_of_the_way(::fcntl(listener.get(), F_DUPFD_CLOEXEC, 0));
    if (!place) {
        return {};  // a connection that is accepted now would find none, and be lost
    }
    int connection;
    do {
        connection = ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
    } while (connection < 0 && (errno == EINTR || errno == ECONNABORTED));
    Descriptor const accepted(connection);
    return accepted && ::dup3(accepted.get(), place.get(), O_CLOEXEC) >= 0 ? std::move(place) : Descriptor();
}

bool is_shortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

int process_at(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return peer.pid;
}

bool is_hung_up(int connection) {
    pollfd end{connection, 0, 0};
    return ::poll(&end, 1, 0) == 1 && (end.revents & POLLHUP) != 0;
}

bool send_all(int descriptor, char const* bytes, std::size_t size) {
    while (size > 0) {
        ssize_t const sent = ::send(descriptor, bytes, size, MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) {
            return false;
        }
        bytes += sent > 0 ? sent : 0;
        size -= sent > 0 ? static_cast<std::size_t>(sent) : 0;
    }
    return true;
}

}  // namespace sim
