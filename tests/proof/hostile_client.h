// Clients that do what no station should, and the consoles that meet them.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/console_session.h"

namespace proof {

// What a client does at its worst. What it does before that is a mixture of all.
enum class Hostility {
    cut,           // ends the connection at any byte of a session
    reset,         // the same, by a reset
    half_close,    // says no more, and listens on
    slow_bytes,    // sends each byte by itself, with pauses
    long_lines,    // sends lines of a megabyte
    noise,         // sends any bytes
    endless_line,  // sends a line that never ends
    deaf,          // never reads what it is sent, until the console cannot send
    silent,        // stays, and sends nothing
};

constexpr char const* kHostilities[] = {"cut",   "reset",        "half close", "slow bytes", "long lines",
                                        "noise", "endless line", "deaf",       "silent"};

class HostileClient {
public:
    // Connects. The seed fixes all that it does, but for its moments.
    HostileClient(Hostility hostility, unsigned int seed) : hostility_(hostility), random_(seed) {}

    // Returns when the client has done its worst and, where it stays, the console has ended the connection.
    void talk();
    // Whether it has done its worst; from any thread.
    bool is_done() const { return done_; }

private:
    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(random_() % limit); }
    std::string part_of_a_session();
    std::string noise(unsigned int size);
    void send_slowly(std::string const& text);
    void send_long_line();
    void mix();
    void do_worst();
    bool send_line_without_end();
    void ask_without_reading();
    void stay();

    Hostility hostility_;
    std::mt19937 random_;
    support::StationClient connection_;
    std::atomic<bool> done_{false};
};

// How it went.
struct Encounter {
    bool left_by_client = false;          // the client's own keys ended the console
    unsigned int exit_keys = 0;           // that the operator typed
    std::chrono::milliseconds ending{0};  // from the first of them to the end of the process
    std::vector<std::string> problems;
};

// Starts a console in socket mode, sends it a client, and lets the operator end it by 'x': in the middle of all
// where `interrupts`, otherwise when the client has done its worst. Needs the port of this network for itself.
Encounter meet(Hostility hostility, bool interrupts, unsigned int seed);

}  // namespace proof
