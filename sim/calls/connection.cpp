// A connection between the library and the device: whole messages over a stream socket.
#include "sim/calls/connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "sim/core/unix_socket.h"

namespace sim {

namespace {

using Size = std::uint32_t;  // stands before each message

constexpr std::size_t kRead = 4096;  // at once; most messages are far shorter

std::string with_size(std::string const& message) {
    auto const size = static_cast<Size>(message.size());
    std::string bytes;
    bytes.reserve(sizeof size + message.size());
    bytes.append(reinterpret_cast<char const*>(&size), sizeof size);
    return bytes += message;
}

// Room for a descriptor that goes with a message.
union Attachment {
    cmsghdr header;
    char bytes[CMSG_SPACE(sizeof(int))];
};

msghdr header_of(iovec& part, Attachment& attachment) {
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = attachment.bytes;
    header.msg_controllen = sizeof attachment.bytes;
    return header;
}

ssize_t receive_with_file(int socket, char* bytes, std::size_t size, Descriptor& file) {
    Attachment attachment{};
    iovec part{bytes, size};
    msghdr header = header_of(part, attachment);
    ssize_t const count = ::recvmsg(socket, &header, MSG_CMSG_CLOEXEC);
    cmsghdr const* const came = count > 0 ? CMSG_FIRSTHDR(&header) : nullptr;
    if (came != nullptr && came->cmsg_level == SOL_SOCKET && came->cmsg_type == SCM_RIGHTS) {
        int descriptor;
        std::memcpy(&descriptor, CMSG_DATA(came), sizeof descriptor);
        file = out_of_the_way(descriptor);
    }
    return count;
}

// recv() alone would wait for bytes, too, but wake each time that the other end has taken some of what it was sent.
void wait_for_bytes(int socket) {
    pollfd readable{socket, POLLIN, 0};
    ::poll(&readable, 1, -1);
}

}  // namespace

bool Connection::send(std::string const& message) {
    std::string const bytes = with_size(message);
    return send_all(socket_, bytes.data(), bytes.size());
}

bool Connection::send(std::string const& message, Descriptor const& file) {
    if (!file) {
        return send(message);
    }
    std::string bytes = with_size(message);
    int const descriptor = file.get();
    Attachment attachment{};
    iovec part{bytes.data(), bytes.size()};
    msghdr const header = header_of(part, attachment);
    cmsghdr* const goes = CMSG_FIRSTHDR(&header);
    goes->cmsg_level = SOL_SOCKET;
    goes->cmsg_type = SCM_RIGHTS;
    goes->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(goes), &descriptor, sizeof descriptor);
    ssize_t sent;
    do {
        sent = ::sendmsg(socket_, &header, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    auto const first = static_cast<std::size_t>(sent);
    return sent >= 0 && send_all(socket_, bytes.data() + first, bytes.size() - first);
}

void Connection::send_at_once(std::string const& message) {
    std::string const bytes = with_size(message);
    ssize_t const sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent != static_cast<ssize_t>(bytes.size())) {
        shut_down();
    }
}

bool Connection::receive(std::string_view& message) {
    return receive(message, nullptr);
}

bool Connection::receive(std::string_view& message, Descriptor& file) {
    return receive(message, &file);
}

bool Connection::receive(std::string_view& message, Descriptor* file) {
    input_.erase(0, taken_);
    taken_ = 0;
    std::size_t wanted = sizeof(Size);
    while (true) {
        if (input_.size() >= sizeof(Size)) {
            Size size;
            std::memcpy(&size, input_.data(), sizeof size);
            if (size > kLongestMessage) {
                return false;
            }
            wanted = sizeof size + size;
        }
        if (input_.size() >= wanted) {
            taken_ = wanted;
            message = std::string_view(input_).substr(sizeof(Size), wanted - sizeof(Size));
            return true;
        }
        wait_for_bytes(socket_);
        char bytes[kRead];
        ssize_t const count = file != nullptr ? receive_with_file(socket_, bytes, sizeof bytes, *file)
                                              : ::recv(socket_, bytes, sizeof bytes, 0);
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return false;
        }
        input_.append(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

void Connection::shut_down() const {
    ::shutdown(socket_, SHUT_RDWR);
}

}  // namespace sim
