// Serves the connections of one socket, each on a thread of its own.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>

#include "sim/core/descriptor.h"
#include "sim/core/error.h"

namespace sim {

class SocketServer {
public:
    struct Handling {
        // Called on the connection's thread; the connection ends when it returns, or throws. It has to return soon
        // after the connection has been shut down. It must not close the descriptor.
        std::function<void(int connection)> serve;
        // Tells a connection that finds no place why it is closed. Must not block.
        std::function<void(int connection, std::string const& reason)> refuse;
        // The other end has gone, while the connection may still be served. Must not block for long.
        std::function<void(int connection)> gone{};
    };

    // No process has more connections than it leaves to the others of altogether `most`: so one that makes as many as
    // it can has half of them, and shuts nobody out.
    SocketServer(Handling handling, std::size_t most) : handling_(std::move(handling)), most_(most) {}
    SocketServer(SocketServer const&) = delete;
    SocketServer& operator=(SocketServer const&) = delete;
    ~SocketServer() { stop(); }

    // Listens at `path`. Once.
    Error start(std::string const& path);
    // Shuts all connections down, and returns when none is served any more.
    void stop();

private:
    struct Connection {
        Descriptor descriptor;
        int process = 0;  // at the other end
        bool ended = false;
        std::thread thread;
    };

    void run();
    bool accept();
    void take(Descriptor descriptor);
    void serve(Connection& connection);
    bool has_place(int process) const;
    bool watch(int descriptor, std::uint32_t events) const;
    void remove_ended();

    Handling const handling_;
    std::size_t const most_;
    Descriptor listener_;
    Descriptor watched_;  // an epoll: the listener, the ends of connections, and what follows
    Descriptor ended_;    // an eventfd: the service of a connection has ended
    std::thread thread_;
    std::mutex mutex_;  // guards what follows
    std::condition_variable stopped_;
    std::list<Connection> connections_;
    bool stopping_ = false;
};

}  // namespace sim
