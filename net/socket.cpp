// IPv4 TCP sockets of the Linux socket interface.
#include "net/socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <stdexcept>

namespace {

constexpr int kListenBacklog = 4096;
constexpr int kAddressTextSize = 20;

// A length as a 32-bit signed count, as the result is one.
unsigned long signed_count(unsigned long length) {
    return std::min<unsigned long>(length, std::numeric_limits<int>::max());
}

}  // namespace

socket_base::socket_base(int domain, int type, int protocol, block_type mode)
    : domain_(domain), type_(type), protocol_(protocol), block_type_(mode), descriptor_(0) {
    int const created = ::socket(domain_, type_, protocol_);
    if (created == -1) {
        throw std::runtime_error("Cannot create socket");
    }
    descriptor_ = created;
    if (block_type_ == non_blocking) {
        ::fcntl(descriptor_, F_SETFL, ::fcntl(descriptor_, F_GETFL) | O_NONBLOCK);
    }
}

socket_base::socket_base(int domain, int type, int protocol, unsigned int descriptor)
    : domain_(domain),
      type_(type),
      protocol_(protocol),
      block_type_(blocking),
      descriptor_(static_cast<int>(descriptor)) {}

// Kept without a test of the value: the end of socket mode counts on a closed socket closing standard input.
socket_base::~socket_base() {
    ::close(descriptor_);
}

int socket_base::close() {
    int const result = ::close(descriptor_);
    descriptor_ = 0;
    return result;
}

void socket_base::shutdown() const {
    ::shutdown(descriptor_, SHUT_RDWR);
}

unsigned int socket_base::inet_pton(std::string const& text) const {
    in_addr address{};
    if (::inet_pton(AF_INET, text.c_str(), &address) != 1) {
        throw std::runtime_error("Invalid address");
    }
    return address.s_addr;
}

std::string socket_base::inet_ntop(unsigned int address) const {
    in_addr const record{address};
    char text[kAddressTextSize] = "";
    ::inet_ntop(AF_INET, &record, text, sizeof text);
    return text;
}

sockaddr_in socket_base::address_record(std::string const& address, unsigned short port) const {
    sockaddr_in record{};
    record.sin_family = AF_INET;
    record.sin_port = htons(port);
    record.sin_addr.s_addr = inet_pton(address);
    return record;
}

socket_tcp_base::socket_tcp_base(block_type mode) : socket_base(AF_INET, SOCK_STREAM, IPPROTO_TCP, mode) {}

socket_tcp_base::socket_tcp_base(int descriptor)
    : socket_base(AF_INET, SOCK_STREAM, IPPROTO_TCP, static_cast<unsigned int>(descriptor)) {}

int socket_tcp_base::read_data(char* buffer, unsigned long length) const {
    return static_cast<int>(::recv(descriptor(), buffer, signed_count(length), 0));
}

int socket_tcp_base::write_data(std::string const& data) {
    return static_cast<int>(::send(descriptor(), data.data(), signed_count(data.size()), 0));
}

socket_tcp::socket_tcp() : socket_tcp_base(blocking) {}

socket_tcp::socket_tcp(int descriptor) : socket_tcp_base(descriptor) {}

int socket_tcp::connect_to_host(std::string const& address, unsigned short port) {
    sockaddr_in const record = address_record(address, port);
    return ::connect(descriptor(), reinterpret_cast<sockaddr const*>(&record), sizeof record);
}

// No address reuse: while the system still holds the port of the last socket mode, the next one fails.
server_tcp::server_tcp(std::string const& address, unsigned short port)
    : socket_base(AF_INET, SOCK_STREAM, IPPROTO_TCP, blocking) {
    sockaddr_in const record = address_record(address, port);
    if (::bind(descriptor(), reinterpret_cast<sockaddr const*>(&record), sizeof record) == -1) {
        throw std::runtime_error("Bind failed");
    }
    if (::listen(descriptor(), kListenBacklog) == -1) {
        throw std::runtime_error("Listen failed");
    }
}

socket_tcp server_tcp::accept() const {
    int connection;
    do {
        connection = ::accept(descriptor(), nullptr, nullptr);
    } while (connection == -1 && errno == EINTR);
    if (connection == -1) {
        throw std::runtime_error("Cannot accept");
    }
    return socket_tcp(connection);
}
