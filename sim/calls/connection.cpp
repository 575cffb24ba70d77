// A connection between the library and the device: whole messages over a stream socket.
#include "sim/calls/connection.h"

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

}  // namespace

bool Connection::send(std::string const& message) {
    std::string const bytes = with_size(message);
    return send_all(socket_, bytes.data(), bytes.size());
}

void Connection::send_at_once(std::string const& message) {
    std::string const bytes = with_size(message);
    ssize_t const sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent != static_cast<ssize_t>(bytes.size())) {
        shut_down();
    }
}

bool Connection::receive(std::string_view& message) {
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
        char bytes[kRead];
        ssize_t const count = ::recv(socket_, bytes, sizeof bytes, 0);
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
