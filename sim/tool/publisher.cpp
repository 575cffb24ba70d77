// Makes the console of a private network reachable from the host.
#include "sim/tool/publisher.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "sim/core/numbers.h"
#include "sim/core/thread.h"
#include "sim/core/unix_socket.h"
#include "sim/tool/execute.h"
#include "sim/tool/exit_status.h"

namespace sim {

namespace {

constexpr int kBacklog = 16;
constexpr std::chrono::milliseconds kPause{100};

sockaddr_in socket_address(in_addr_t host, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = host;
    address.sin_port = htons(port);
    return address;
}

Descriptor connect_to_console() {
    sockaddr_in const address = socket_address(htonl(INADDR_LOOPBACK), kConsolePort);
    Descriptor console(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    bool const connected =
        console && ::connect(console.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0;
    return connected ? std::move(console) : Descriptor();
}

// One way of a connection; its end goes on to the other side.
void carry(Descriptor const& from, Descriptor const& to) {
    std::array<char, 4096> bytes;
    ssize_t count = 0;
    while ((count = ::recv(from.get(), bytes.data(), bytes.size(), 0)) > 0 || (count < 0 && errno == EINTR)) {
        if (count > 0 && !send_all(to.get(), bytes.data(), static_cast<std::size_t>(count))) {
            break;
        }
    }
    ::shutdown(to.get(), SHUT_WR);
    ::shutdown(from.get(), SHUT_RD);
}

// Its threads run until the process ends.
class Publisher {
public:
    // Never destroyed, as they are not.
    static Publisher& instance() {
        static Publisher& publisher = *new Publisher;
        return publisher;
    }

    void serve(int listener) {
        while (true) {
            auto const client = std::make_shared<Descriptor const>(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
            if (*client) {
                start("r47-client", [=] { serve(client); });
            } else if (is_shortage(errno)) {
                std::this_thread::sleep_for(kPause);  // until a client has gone
            } else if (errno != EINTR && errno != ECONNABORTED) {
                return;
            }
        }
    }

    // The console has ended: lets its last words reach the clients that read them.
    void finish() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, kFarewell, [&] { return consoles_ == 0; });
    }

private:
    static constexpr std::chrono::seconds kFarewell{2};

    void serve(std::shared_ptr<Descriptor const> const& client) {
        auto const console = std::make_shared<Descriptor const>(connect_to_console());
        if (!*console) {
            return;
        }
        count(1);
        bool const carried = start("r47-console", [=] {
            carry(*console, *client);
            count(-1);
        });
        if (carried) {
            carry(*client, *console);
        } else {
            count(-1);
        }
    }

    // False where the host has no thread left: the connection ends then.
    static bool start(char const* name, std::function<void()> body) {
        try {
            start_thread_without_signals(name, std::move(body)).detach();
            return true;
        } catch (std::system_error const&) {
            return false;
        }
    }

    void count(int more) {
        std::lock_guard<std::mutex> const lock(mutex_);
        consoles_ += more;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    int consoles_ = 0;  // connections that the console has not ended
};

}  // namespace

Descriptor listen_for_console(PublishedAt const& place, Error& error) {
    sockaddr_in const address = socket_address(::inet_addr(place.address.c_str()), place.port);
    int const yes = 1;
    Descriptor listener = out_of_the_way(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ::setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (!listener || ::bind(listener.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0 ||
        ::listen(listener.get(), kBacklog) != 0) {
        error = "cannot publish at " + place.address + ":" + std::to_string(place.port) + ": " + std::strerror(errno);
        return {};
    }
    return listener;
}

void publish(Descriptor const& listener, SandboxOptions& options) {
    ::fcntl(listener.get(), F_SETFD, 0);  // so that it reaches the sandbox
    options.private_network = true;
    options.launcher = {program_path(program_invocation_name), kPublished, std::to_string(listener.get())};
}

int run_published(std::vector<std::string> const& words) {
    int const listener = parse_integer_as<int>(words.front()).value_or(-1);
    ::fcntl(listener, F_SETFD, FD_CLOEXEC);  // the command has no need of it
    pid_t const publisher = ::getpid();
    pid_t const child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // as the sandbox ends its command with r47-sim
        if (::getppid() != publisher) {
            ::_exit(kFailed);
        }
        execute({words.begin() + 1, words.end()});
        ::_exit(fail(kNotExecutable, words[1] + ": " + std::strerror(errno)));
    }
    for (int const number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        std::signal(number, SIG_IGN);  // they are for the command; its status is told
    }
    start_thread_without_signals("r47-publish", [listener] { Publisher::instance().serve(listener); }).detach();
    int const status = child > 0 ? wait_for(child) : kFailed;
    Publisher::instance().finish();
    return status;
}

}  // namespace sim
