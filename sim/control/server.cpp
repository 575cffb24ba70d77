// Serves the control grammar on a Unix socket.
#include "sim/control/server.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "sim/control/control_socket.h"
#include "sim/core/descriptor.h"
#include "sim/core/thread.h"

namespace sim {

namespace {

// A client that leaves more than this unread is not listened to; with more than the second, it is dropped.
constexpr std::size_t kMuchUnread = 1U << 16U;
constexpr std::size_t kTooMuchUnread = 1U << 22U;

}  // namespace

Server::~Server() {
    stop();
}

Error Server::start(std::string const& path) {
    Error error;
    listener_ = listen_on(path, error);
    if (listener_ < 0) {
        return error;
    }
    path_ = path;
    wake_ = move_out_of_the_way(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    thread_ = start_library_thread("r47-control", [this] { serve(); });
    return {};
}

void Server::stop() {
    if (!thread_.joinable()) {
        return;
    }
    {
        std::lock_guard<std::mutex> const lock(output_mutex_);
        stopping_ = true;
    }
    wake();
    thread_.join();
    ::close(listener_);
    ::close(wake_);
    ::unlink(path_.c_str());
}

void Server::serve() {
    for (;;) {
        {
            std::lock_guard<std::mutex> const lock(output_mutex_);
            if (stopping_) {
                std::for_each(clients_.begin(), clients_.end(), [](Client& client) { client.lost = true; });
                break;
            }
        }
        wait();
        remove_done();
    }
    remove_done();
}

// Waits until something can be done and does it.
void Server::wait() {
    std::vector<pollfd> polled{{listener_, POLLIN, 0}, {wake_, POLLIN, 0}};
    std::vector<Client*> clients;
    for (Client& client : clients_) {
        std::lock_guard<std::mutex> const lock(output_mutex_);
        bool const reads = !client.ended && client.output.size() < kMuchUnread;
        auto const events = (reads ? POLLIN : 0) | (client.output.empty() ? 0 : POLLOUT);
        polled.push_back({client.fd, static_cast<short>(events), 0});
        clients.push_back(&client);
    }
    if (::poll(polled.data(), polled.size(), -1) < 0) {
        return;
    }
    std::uint64_t wakes = 0;
    [[maybe_unused]] auto const woken = ::read(wake_, &wakes, sizeof wakes);
    for (std::size_t i = 0; i < clients.size(); ++i) {
        short const events = polled[i + 2].revents;
        if ((events & POLLIN) != 0) {
            read_from(*clients[i]);
        } else if ((events & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
            std::lock_guard<std::mutex> const lock(output_mutex_);
            clients[i]->lost = true;
        }
        write_to(*clients[i]);
    }
    if ((polled[0].revents & POLLIN) != 0) {
        accept_client();
    }
}

void Server::accept_client() {
    int const fd = move_out_of_the_way(::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (fd < 0) {
        return;
    }
    clients_.emplace_back();
    clients_.back().fd = fd;
}

void Server::read_from(Client& client) {
    std::array<char, kLongestLine> bytes{};
    ssize_t const count = ::recv(client.fd, bytes.data(), bytes.size(), 0);
    if (count > 0) {
        client.input.append(bytes.data(), static_cast<std::size_t>(count));
        take_lines(client);
    } else if (count == 0) {
        client.ended = true;
    } else if (errno != EAGAIN && errno != EINTR) {
        std::lock_guard<std::mutex> const lock(output_mutex_);
        client.lost = true;
    }
}

void Server::take_lines(Client& client) {
    std::size_t from = 0;
    for (std::size_t end = client.input.find('\n'); end != std::string::npos; end = client.input.find('\n', from)) {
        if (client.skipping) {
            client.skipping = false;
        } else if (end - from > kLongestLine) {
            send(client, "error: line too long\n");
        } else {
            answer(client, client.input.substr(from, end - from));
        }
        from = end + 1;
    }
    client.input.erase(0, from);
    if (client.input.size() > kLongestLine) {
        if (!client.skipping) {
            send(client, "error: line too long\n");
        }
        client.skipping = true;
    }
    if (client.skipping) {
        client.input.clear();
    }
}

void Server::answer(Client& client, std::string const& line) {
    Reply const reply = commands_.run({device_, [this, &client] { follow(client); }}, line);
    send(client, reply.ok ? reply.text + "ok\n" : "error: " + reply.text + "\n");
}

void Server::send(Client& client, std::string const& text) {
    std::lock_guard<std::mutex> const lock(output_mutex_);
    client.output += text;
    client.lost = client.lost || client.output.size() > kTooMuchUnread;
}

void Server::write_to(Client& client) {
    std::lock_guard<std::mutex> const lock(output_mutex_);
    if (client.output.empty()) {
        return;
    }
    ssize_t const count = ::send(client.fd, client.output.data(), client.output.size(), MSG_NOSIGNAL);
    if (count >= 0) {
        client.output.erase(0, static_cast<std::size_t>(count));
    } else if (errno != EAGAIN && errno != EINTR) {
        client.lost = true;
    }
}

void Server::follow(Client& client) {
    if (client.follower != 0) {
        return;
    }
    client.follower = device_.journal.follow([this, &client](std::string const& line) {
        send(client, line);
        wake();
    });
}

// A client that sends no more stays for its replies, and as long as it follows the journal.
bool Server::is_done(Client& client) {
    std::lock_guard<std::mutex> const lock(output_mutex_);
    return client.lost || (client.ended && client.follower == 0 && client.output.empty());
}

void Server::remove_done() {
    for (auto client = clients_.begin(); client != clients_.end();) {
        if (!is_done(*client)) {
            ++client;
            continue;
        }
        device_.journal.unfollow(client->follower);
        ::close(client->fd);
        client = clients_.erase(client);
    }
}

void Server::wake() {
    std::uint64_t const one = 1;
    [[maybe_unused]] auto const written = ::write(wake_, &one, sizeof one);
}

}  // namespace sim
