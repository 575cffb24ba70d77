// Serves the control grammar on a Unix socket.
#pragma once

#include <string>

#include "sim/control/command.h"
#include "sim/core/socket_server.h"

namespace sim {

// Any number of commands on a connection; each reply is its body lines and then a line "ok" or "error: MESSAGE". Lines
// longer than kLongestLine are refused. Each client has a thread of its own: one that goes, sends half a line, does not
// read or steps the clock delays nobody else.
class Server {
public:
    static constexpr std::size_t kLongestLine = 4096;
    static constexpr std::size_t kMostClients = 256;  // see SocketServer; who finds no place is told so

    Server(Device& device, Commands const& commands, ProgramList* programs)
        : device_(device),
          commands_(commands),
          programs_(programs),
          server_({[this](int connection) { serve(connection); }, refuse}, kMostClients) {}

    // Listens at `path`. Once.
    Error start(std::string const& path) { return server_.start(path); }
    // Ends all connections.
    void stop() { server_.stop(); }

private:
    void serve(int connection);
    static void refuse(int connection, std::string const& reason);

    Device& device_;
    Commands const& commands_;
    ProgramList* const programs_;
    SocketServer server_;
};

}  // namespace sim
