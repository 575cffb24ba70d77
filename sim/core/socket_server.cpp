// Serves the connections of one socket, each on a thread of its own.
#include "sim/core/socket_server.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <system_error>

#include "sim/core/thread.h"
#include "sim/core/unix_socket.h"

namespace sim {

namespace {

constexpr std::chrono::milliseconds kPause{100};  // where the host has no descriptor left

}  // namespace

Error SocketServer::start(std::string const& path) {
    watched_ = out_of_the_way(::epoll_create1(EPOLL_CLOEXEC));
    ended_ = out_of_the_way(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    Error error;
    listener_ = listen_on(path, error);
    if (!error.empty()) {
        return error;
    }
    if (!watched_ || !ended_ || !watch(listener_.get(), EPOLLIN) || !watch(ended_.get(), EPOLLIN)) {
        return "cannot serve " + path + ": " + std::strerror(errno);
    }
    thread_ = start_thread_without_signals("r47-accept", [this] { run(); });
    return {};
}

void SocketServer::stop() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        stopping_ = true;
        for (Connection const& connection : connections_) {
            ::shutdown(connection.descriptor.get(), SHUT_RDWR);
        }
    }
    stopped_.notify_all();
    if (thread_.joinable()) {
        ::shutdown(listener_.get(), SHUT_RDWR);
        thread_.join();
    }
    for (Connection& connection : connections_) {  // nobody adds or removes one any more
        connection.thread.join();
    }
    connections_.clear();
}

// A descriptor is closed on this thread alone, so that an event is of the connection for which it was meant.
void SocketServer::run() {
    while (true) {
        epoll_event event{};
        int const count = ::epoll_wait(watched_.get(), &event, 1, -1);
        if (count < 0 && errno != EINTR) {
            return;
        }
        if (count < 1) {
            continue;
        }
        if (event.data.fd == ended_.get()) {
            eventfd_t ends;
            ::eventfd_read(ended_.get(), &ends);
            std::lock_guard<std::mutex> const lock(mutex_);
            remove_ended();
        } else if (event.data.fd != listener_.get()) {
            handling_.gone(event.data.fd);
        } else if (!accept()) {
            return;
        }
    }
}

// False where the server ends.
bool SocketServer::accept() {
    Descriptor descriptor = accept_from(listener_);
    if (descriptor) {
        take(std::move(descriptor));
        return true;
    }
    if (!is_shortage(errno)) {
        return false;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    remove_ended();
    return !stopped_.wait_for(lock, kPause, [&] { return stopping_; });
}

void SocketServer::take(Descriptor descriptor) {
    std::lock_guard<std::mutex> const lock(mutex_);
    remove_ended();
    int const process = process_at(descriptor.get());
    if (stopping_) {
        return;
    }
    if (!has_place(process)) {
        handling_.refuse(descriptor.get(), "too many connections: a process may have as many as it leaves to others");
        return;
    }
    Connection& connection = connections_.emplace_back();
    connection.descriptor = std::move(descriptor);
    connection.process = process;
    try {
        connection.thread = start_thread_without_signals("r47-serve", [this, &connection] { serve(connection); });
    } catch (std::system_error const& error) {
        handling_.refuse(connection.descriptor.get(),
                         std::string("no thread for one more connection: ") + error.what());
        connections_.pop_back();
        return;
    }
    if (handling_.gone) {
        watch(connection.descriptor.get(), EPOLLONESHOT);  // its end is told without being asked for
    }
}

void SocketServer::serve(Connection& connection) {
    try {
        handling_.serve(connection.descriptor.get());
    } catch (std::exception const&) {
        // What one connection makes fail, such as by asking for more memory than there is, ends that one alone.
    }
    std::lock_guard<std::mutex> const ending(mutex_);
    ::shutdown(connection.descriptor.get(), SHUT_RDWR);
    connection.ended = true;
    ::eventfd_write(ended_.get(), 1);
}

bool SocketServer::has_place(int process) const {
    auto const its = std::count_if(connections_.begin(), connections_.end(),
                                   [&](Connection const& connection) { return connection.process == process; });
    return connections_.size() < most_ && static_cast<std::size_t>(its) < most_ - connections_.size();
}

bool SocketServer::watch(int descriptor, std::uint32_t events) const {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    return ::epoll_ctl(watched_.get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

// Joins threads that hold the lock no more.
void SocketServer::remove_ended() {
    for (auto connection = connections_.begin(); connection != connections_.end();) {
        if (connection->ended) {
            connection->thread.join();
            connection = connections_.erase(connection);
        } else {
            ++connection;
        }
    }
}

}  // namespace sim
