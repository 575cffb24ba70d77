// How long a client waits for the console's answer, and how many system calls a pass through a menu takes, with a
// library that answers at once: against a bare server that reads byte by byte, as the console must, and prints the
// same.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <thread>

#include "bench/bench.h"
#include "bench/traced.h"

namespace {

// The fastest sessions of each are compared: those that nothing else disturbed.
constexpr int kSessions = 40;
constexpr int kRounds = 10;
constexpr int kPassesOfRound = 20;  // one after the other, so that each waits for the screen of the one before
constexpr int kCountedPasses = 1000;
constexpr std::chrono::seconds kLimit(60);  // that no working server reaches
constexpr unsigned short kConsolePort = 32360;

// The pass that is measured: all pins of the digital I/O are read.
constexpr char const* kCommand = "p\n";
constexpr char const* kReply = "0;\\n";
constexpr char const* kEcho = "ReadLine: p\n\n\tYour option = p\n";
constexpr char const* kResult = "All DIO status: 000000\n";
constexpr char const* kPrompt = "Enter your option = ";

[[noreturn]] void fail(char const* what) {
    std::perror(what);
    std::exit(1);
}

// Client and servers share a processor: which of several the system gives to two that talk makes more of a difference
// than all else, and stays so while they talk.
void stay_on_one_processor() {
    cpu_set_t here;
    CPU_ZERO(&here);
    CPU_SET(::sched_getcpu(), &here);
    if (::sched_setaffinity(0, sizeof here, &here) != 0) {
        fail("processor");
    }
}

sockaddr_in loopback(unsigned short port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// A server for one client, that prints into a file in memory.
class Server {
public:
    // `serve` is run in a process of its own, whose standard output is the file, and never returns.
    template <typename Serve>
    Server(unsigned short port, Serve serve) : printed_(::memfd_create("printed", MFD_CLOEXEC)) {
        if (printed_ < 0 || (pid_ = ::fork()) < 0) {
            fail("server");
        }
        if (pid_ == 0) {
            ::dup2(printed_, STDOUT_FILENO);
            serve();
            ::_exit(127);
        }
        connect(port);
    }
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;
    ~Server() {
        linger const reset{1, 0};  // or the system would hold the port of the console's end
        ::setsockopt(client_, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
        ::close(client_);
        ::kill(pid_, SIGKILL);
        while (::waitpid(-1, nullptr, __WALL) != pid_) {  // its threads first, where they are traced
        }
        ::close(printed_);
    }

    pid_t pid() const { return pid_; }

    void send(char const* lines) const { ::send(client_, lines, std::strlen(lines), MSG_NOSIGNAL); }

    void ask() const {
        char reply[sizeof "0;\\n"] = "";
        send(kCommand);
        if (::recv(client_, reply, std::strlen(kReply), MSG_WAITALL) <= 0 || std::strcmp(reply, kReply) != 0) {
            std::fprintf(stderr, "the server answers otherwise: %s\n", reply);
            std::exit(1);
        }
    }

    // All that it printed, once that ends so.
    std::string printed(std::string const& end) const {
        std::string text;
        auto const start = std::chrono::steady_clock::now();
        while (text.size() < end.size() || text.compare(text.size() - end.size(), end.size(), end) != 0) {
            if (std::chrono::steady_clock::now() - start > kLimit) {
                std::fprintf(stderr, "the server prints otherwise\n");
                std::exit(1);
            }
            struct stat file {};
            ::fstat(printed_, &file);
            text.resize(static_cast<std::size_t>(file.st_size));
            [[maybe_unused]] auto const count = ::pread(printed_, text.data(), text.size(), 0);
        }
        return text;
    }

private:
    // Tries until somebody listens there.
    void connect(unsigned short port) {
        sockaddr_in const address = loopback(port);
        do {
            if (::waitpid(pid_, nullptr, WNOHANG) == pid_) {
                std::fprintf(stderr, "the server has ended\n");
                std::exit(1);
            }
            ::close(client_);
            client_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        } while (::connect(client_, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0);
        int const at_once = 1;
        ::setsockopt(client_, IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
    }

    int printed_ = -1;
    int client_ = -1;
    pid_t pid_ = -1;
};

// Serves as the console does in its digital I/O menu. It flushes where the console must: before it waits for a line,
// behind the echo of the option, which the library's call follows, and before the reply.
[[noreturn]] void serve_bare(int listener, std::string const& screen) {
    static char buffer[1 << 16];
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    int const client = ::accept(listener, nullptr, nullptr);
    while (true) {
        std::fputs(screen.c_str(), stdout);
        std::fflush(stdout);
        char line[1024] = "";
        std::size_t size = 0;
        while (::recv(client, &line[size], 1, 0) == 1 && line[size] != '\n') {
            ++size;
        }
        line[size] = '\0';
        std::printf("ReadLine: %s\n\n\tYour option = %c\n", line, line[0]);
        std::fflush(stdout);
        std::fputs(kResult, stdout);
        std::fflush(stdout);
        ::send(client, kReply, std::strlen(kReply), MSG_NOSIGNAL);
    }
}

// What the console prints for a pass.
std::string pass_of(Server const& console) {
    console.send("a\n");
    console.ask();
    std::string const text = console.printed(kPrompt);
    std::string pass = text.substr(std::min(text.rfind(kEcho), text.size()));
    if (pass.rfind(std::string(kEcho) + kResult, 0) != 0) {
        std::fprintf(stderr, "the console prints otherwise: %s\n", text.c_str());
        std::exit(1);
    }
    return pass;
}

double calls_per_pass(Server const& server) {
    bench::Traced const traced(server.pid());
    std::atomic<bool> done{false};
    std::thread client([&] {
        for (int pass = 0; pass < kCountedPasses; ++pass) {
            server.ask();
        }
        done = true;
    });
    long const calls = traced.calls_until([&] { return done.load(); });
    client.join();
    return std::round(static_cast<double>(calls) / kCountedPasses);
}

// The console and the bare server, each with a client.
class Session {
public:
    explicit Session(char const* console)
        : console_(kConsolePort,
                   [&] {
                       int terminal[2];  // at which nothing is typed
                       [[maybe_unused]] int const piped = ::pipe(terminal);
                       ::dup2(terminal[0], STDIN_FILENO);
                       ::execl(console, console, "socket", nullptr);
                       std::perror(console);
                   }),
          pass_(pass_of(console_)),
          bare_(port(), [&] { serve_bare(listener_, pass_.substr(std::strlen(kEcho) + std::strlen(kResult))); }) {
        ::close(listener_);
        bare_.ask();
    }

    // Medians of the console's and of the bare server's round trips.
    std::pair<double, double> times() const {
        std::vector<double> times;
        std::vector<double> bare_times;
        for (int round = 0; round < kRounds; ++round) {
            for (int i = 0; i < kPassesOfRound; ++i) {
                times.push_back(bench::time_of([&] { console_.ask(); }));
            }
            for (int i = 0; i < kPassesOfRound; ++i) {
                bare_times.push_back(bench::time_of([&] { bare_.ask(); }));
            }
        }
        std::string same;
        for (int i = 0; i < kPassesOfRound; ++i) {
            same += pass_;
        }
        console_.printed(same);
        bare_.printed(same);
        return {bench::median(times), bench::median(bare_times)};
    }

    std::pair<double, double> calls() const { return {calls_per_pass(console_), calls_per_pass(bare_)}; }

private:
    // Of the bare server, which listens from now on.
    unsigned short port() {
        sockaddr_in address = loopback(0);
        socklen_t length = sizeof address;
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(listener_, 1) != 0 ||
            ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            fail("bare server");
        }
        return ntohs(address.sin_port);
    }

    Server console_;
    std::string pass_;
    int listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Server bare_;
};

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_client CONSOLE\n");
        return 2;
    }
    stay_on_one_processor();
    double time = 1;
    double bare_time = 1;
    for (int session = 0; session < kSessions; ++session) {
        auto const [times, bare_times] = Session(argv[1]).times();
        time = std::min(time, times);
        bare_time = std::min(bare_time, bare_times);
    }
    std::printf("round trip of a client: %.1f us, of the bare server's: %.1f us, ratio %.2f (goal: at most 1.10)\n",
                time * 1e6, bare_time * 1e6, time / bare_time);
    auto const [calls, bare_calls] = Session(argv[1]).calls();
    std::printf("system calls for a pass: %.0f, of the bare server: %.0f, ratio %.2f\n", calls, bare_calls,
                calls / bare_calls);
}
