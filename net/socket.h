// IPv4 TCP sockets of the Linux socket interface.
#pragma once

#include <netinet/in.h>

#include <string>

// Owns one descriptor. Not copied: two owners would close it twice.
class socket_base {
public:
    enum block_type : int { blocking = 0, non_blocking = 1 };

    // Creates a socket. Throws std::runtime_error("Cannot create socket").
    socket_base(int domain, int type, int protocol, block_type mode);
    // Adopts an open descriptor; makes no system call.
    socket_base(int domain, int type, int protocol, unsigned int descriptor);
    socket_base(socket_base const&) = delete;
    socket_base& operator=(socket_base const&) = delete;
    // Closes the stored descriptor whatever its value: after close() that is 0, standard input.
    virtual ~socket_base();

    // Closes the descriptor, stores 0 as the descriptor and returns the result of the close.
    int close();
    // Ends both directions of the connection: a read pending in another thread returns. The descriptor stays open.
    void shutdown() const;

    // IPv4 address in network byte order. Throws std::runtime_error("Invalid address") for any other text.
    unsigned int inet_pton(std::string const& text) const;
    // Dotted text of an IPv4 address in network byte order.
    std::string inet_ntop(unsigned int address) const;

    int descriptor() const { return descriptor_; }

protected:
    // The record that bind and connect take; the port is in host byte order.
    sockaddr_in address_record(std::string const& address, unsigned short port) const;

private:
    int domain_;
    int type_;
    int protocol_;
    int block_type_;
    int descriptor_;
};

class socket_tcp_base : public socket_base {
public:
    explicit socket_tcp_base(block_type mode);
    explicit socket_tcp_base(int descriptor);

    // One recv: the bytes read, 0 at the end of the stream, -1 on error. Blocks until there is something.
    int read_data(char* buffer, unsigned long length) const;
    // One send of the whole string, without a loop for partial sends: the bytes sent or -1.
    int write_data(std::string const& data);
};

class socket_tcp : public socket_tcp_base {
public:
    // A new blocking socket.
    socket_tcp();
    // An accepted connection.
    explicit socket_tcp(int descriptor);

    // 0 or -1. Throws as inet_pton.
    int connect_to_host(std::string const& address, unsigned short port);
};

class server_tcp : public socket_base {
public:
    // Listens on the address. Throws std::runtime_error("Bind failed" or "Listen failed"), and as socket_base.
    server_tcp(std::string const& address, unsigned short port);

    // Blocks until a client connects. Throws std::runtime_error("Cannot accept").
    socket_tcp accept() const;
};
