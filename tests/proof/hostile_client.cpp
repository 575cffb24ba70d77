// Clients that do what no station should, and the consoles that meet them.
#include "tests/proof/hostile_client.h"

#include <stdexcept>
#include <thread>

namespace proof {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;
using support::ConsoleSession;

constexpr std::size_t kMegabyte = 1 << 20;
constexpr milliseconds kStall{300};          // a console that takes nothing for so long is blocked
constexpr milliseconds kLongestWorst{5000};  // of a client, for an operator who lets it finish
constexpr milliseconds kLongestEnding{10000};
constexpr milliseconds kBetweenKeys{20};  // of an operator who wants to leave

// Sessions of a station, those of one who has lost the protocol, and the menus that keep a client waiting.
constexpr char const* kSessions[] = {
    "A\r\nk\nm\nu\n25\nabc\nj\n8\nabc\ns\nx\na\nH\n\\2\\np\nx\n\\\\n\nA\\nt\nr\nx\nA\n",
    "a\nf\n0\n0\n0\n0\n0\n1\n5\n1\n5\n1\n5\nF\n0\nh\n0\n1\nH\n0\np\no\nO\n1\n2\nx\nA\n",
    "\n\n\\n\\r\\\\\nf\n-1\n99999999999\n\\\nk\nj\n\nE\ne\nS\n9\nx\nL\ns\nt\nD\nr\n",
    "b\nA\nc\nA\np\nA\ng\nA\nh\nA\n",
};

}  // namespace

std::string HostileClient::part_of_a_session() {
    std::string const session = kSessions[below(std::size(kSessions))];
    return session.substr(0, below(static_cast<unsigned int>(session.size()) + 1));
}

std::string HostileClient::noise(unsigned int size) {
    std::string bytes;
    for (unsigned int i = 0; i < size; ++i) {
        bytes += static_cast<char>(below(256));
    }
    return bytes;
}

void HostileClient::send_slowly(std::string const& text) {
    for (char const c : text) {
        connection_.send({&c, 1});
        std::this_thread::sleep_for(std::chrono::microseconds(below(2000)));
    }
}

void HostileClient::send_long_line() {
    std::string line(kMegabyte + below(kMegabyte), static_cast<char>(' ' + below(95)));
    line.front() = "Akax9"[below(5)];
    connection_.send(line + "\n");
}

// Some of what the others do, in small.
void HostileClient::mix() {
    for (unsigned int rounds = below(4); rounds > 0; --rounds) {
        switch (below(4)) {
            case 0:
                send_slowly(part_of_a_session().substr(0, 20));
                break;
            case 1:
                connection_.send(noise(below(200)));
                break;
            case 2:
                connection_.send("A" + std::string(below(5000), 'z') + "\n");
                break;
            default:
                connection_.send(part_of_a_session());
                break;
        }
    }
}

// Until the console takes no more of it, or has taken a lot.
bool HostileClient::send_line_without_end() {
    std::string const piece(1 << 16, 'z');
    for (int i = 0; i < 64; ++i) {
        if (!connection_.offer(piece, kStall)) {
            return false;
        }
        done_ = i >= 4;
    }
    return true;
}

// Numbers come back as they were sent: the longer, the sooner there is no more room for them.
void HostileClient::ask_without_reading() {
    std::string const number(1023, '1');
    std::string question = "h\n" + number + "\n" + number + "\n";
    for (int i = 0; i < 5; ++i) {
        question += question;
    }
    connection_.send("\nx\nx\na\n");
    while (connection_.offer(question, kStall)) {
    }
}

void HostileClient::stay() {
    done_ = true;
    while (!connection_.ended()) {
    }
}

void HostileClient::do_worst() {
    switch (hostility_) {
        case Hostility::cut:
            connection_.send(part_of_a_session());
            return connection_.close();
        case Hostility::reset:
            connection_.send(part_of_a_session());
            return connection_.reset();
        case Hostility::half_close:
            connection_.send(part_of_a_session());
            connection_.finish();
            return stay();
        case Hostility::slow_bytes:
            send_slowly(part_of_a_session() + part_of_a_session());
            return stay();
        case Hostility::long_lines:
            send_long_line();
            return stay();
        case Hostility::noise:
            connection_.send(noise(1 + below(20000)));
            return stay();
        case Hostility::endless_line:
            send_line_without_end();
            return stay();
        case Hostility::deaf:
            ask_without_reading();
            done_ = true;
            while (connection_.offer("A\n", kStall)) {
            }
            return;
        case Hostility::silent:
            return stay();
    }
}

void HostileClient::talk() {
    try {
        mix();
        do_worst();
    } catch (std::runtime_error const&) {
        // The console has ended the connection: the operator was faster.
    }
    done_ = true;
}

Encounter meet(Hostility hostility, bool interrupts, unsigned int seed) {
    support::SessionOptions options;
    options.arguments = {"socket"};
    options.journal = false;
    auto console = std::make_unique<ConsoleSession>(options);
    HostileClient client(hostility, seed);
    std::thread talking([&] { client.talk(); });
    Encounter encounter;
    auto const patience = interrupts ? milliseconds(seed % 100) : kLongestWorst;
    auto const interruption = Clock::now() + patience;
    bool ended = false;
    while (!ended && Clock::now() < interruption && !client.is_done()) {
        ended = console->ends_within(milliseconds(5));
    }
    auto const start = Clock::now();
    try {
        while (!ended && Clock::now() < start + kLongestEnding) {
            ++encounter.exit_keys;
            console->type("x\n");
            ended = console->ends_within(kBetweenKeys);
        }
    } catch (std::runtime_error const&) {
        ended = console->ends_within(kLongestEnding);  // it ended while the operator typed; its device ends after it
    }
    encounter.ending = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    if (!ended) {
        encounter.problems.push_back(
            "still running; the output ends with " +
            console->output().substr(console->output().size() - std::min<std::size_t>(console->output().size(), 500)));
    } else if (int const status = console->wait_for_exit(); status != 0) {
        encounter.problems.push_back("exit status " + std::to_string(status));
    }
    if (!console->errors().empty()) {
        encounter.problems.push_back("on standard error: " + console->errors());
    }
    encounter.left_by_client = console->output().find("Good Bye") != std::string::npos;
    console.reset();  // frees the client of a console that has not ended
    talking.join();
    return encounter;
}

}  // namespace proof
