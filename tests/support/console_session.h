// Runs the console inside a virtual device of its own, types at it, and keeps what it prints and calls.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/look_until.h"

namespace support {

// Library calls and callbacks as the journal has them, without its other fields: rtu_t::set_exposure(5000) = 0,
// callback gyro_delegate_t(37)
using Calls = std::vector<std::string>;

struct JournalLine {
    std::string start;  // seconds with six decimals, as `took`
    std::string took;
    std::string kind;  // call, callback, command, program, lost
    std::string program;
    std::string thread;
    int object = 0;  // 0: none
    std::string error;
    std::string rule;
    std::string text;
};

JournalLine parse_journal_line(std::string const& line);

// Of a line of the journal: the number of its object, 0 for none, and the call alone.
int object_of(std::string const& line);
std::string call_of(std::string const& line);
// Both, as "2 rtu_t::~rtu_t()".
std::string numbered_call_of(std::string const& line);

struct SessionOptions {
    std::vector<std::string> arguments{};  // of the console
    std::vector<std::string> scenario{};   // control commands: "fault add ...", "set ...", also timed ones
    std::vector<std::string> without{};    // nodes of the device that are left out
    std::string clock = "real";            // or "stepped", or "scaled 10"
    bool terminal = false;                 // input and output are a pseudo-terminal instead of pipes
    std::string entry_point{};             // run this function of the console instead of its main (entry_points.cpp)
    std::string script{};                  // a shell script that starts the console as "$@"
    bool outside = false;                  // of the virtual device, on the host as it is
    std::vector<std::string> wrapper{};    // a command that starts the console, given as its last arguments
    bool journal = true;                   // without it calls() and journal() are empty
    bool one_sequence = false;             // the journal's lines come in the output; calls() and journal() are empty
};

// Options for a run of the console from a shell script, as "$@".
SessionOptions in_shell(std::string const& script);

// The output of a run in one sequence, each line of the journal in it as "<rtu_t::get_exposure() = 0 [10000]>". Its
// texts may end in a number, so the device's time must stay below ten seconds.
std::string with_marked_calls(std::string const& output);

// Failures (a limit reached, a refused control command, a bad option) throw std::runtime_error with what was seen.
class ConsoleSession {
public:
    explicit ConsoleSession(SessionOptions const& options = {});
    ~ConsoleSession();  // kills what still runs
    ConsoleSession(ConsoleSession const&) = delete;
    ConsoleSession& operator=(ConsoleSession const&) = delete;

    void type(std::string_view text);
    void end_input();
    // Closes the reading end of the console's standard output.
    void close_output();
    // Closes the pseudo-terminal.
    void hang_up();

    // Waits until the output holds the text behind the end of what the last wait_for found.
    void wait_for(std::string_view text);
    // Waits until the process has ended; its exit status, 128 + number for a signal.
    int wait_for_exit();
    bool has_exited();
    // Takes what the console prints until its process has ended, for at most so long. Whether it has.
    bool ends_within(std::chrono::milliseconds longest);

    // All output so far. Complete after wait_for_exit().
    std::string const& output() const { return output_; }
    std::string const& errors() const { return errors_; }
    // All calls so far, without those of the real-time unit that is built before main (object 1) where
    // they are its construction and its destruction alone at both ends.
    Calls calls() const;
    // The lines of the journal that are of calls and callbacks, as they are.
    std::vector<std::string> journal() const;

    // Sends one control command to the device and returns the body of its answer.
    std::string control(std::string const& command);

    // The console's own process, for signals and for a look at its threads and descriptors.
    pid_t console_pid() const;
    // Waits until the console waits: all its threads sleep, and for a while none wakes up. Who looks again and again
    // whether there is something to do never gets there.
    void wait_until_asleep() const;

    std::string const& directory() const { return directory_; }

private:
    std::vector<std::string> command_line(SessionOptions const& options) const;
    std::string journal_path(SessionOptions const& options) const;
    void start(std::vector<std::string> const& command_line, SessionOptions const& options);
    // Takes what is there to read, for at most so long; false when both streams have ended.
    bool take_output(std::chrono::milliseconds longest);
    bool reap(bool block);

    std::string directory_;
    pid_t pid_ = -1;
    int status_ = -1;
    int input_ = -1;
    int output_end_ = -1;
    int errors_end_ = -1;
    int control_ = -1;
    std::string output_;
    std::string errors_;
    std::size_t found_ = 0;
};

// One finished run.
struct Transcript {
    std::string output;
    std::string errors;
    Calls calls;
    int status = -1;
};

// Types the text, which must make the console end by itself, and waits for that.
Transcript run_console(std::string_view typed, SessionOptions const& options = {});

// The station's end of socket mode. Waits until the console listens.
class StationClient {
public:
    StationClient();
    ~StationClient();
    StationClient(StationClient const&) = delete;
    StationClient& operator=(StationClient const&) = delete;

    void send(std::string_view text);
    // Each byte as a segment of its own.
    void send_bytewise(std::string_view text);
    // Sends the text as far as the console takes it: false when that is nothing for so long, or no more at all.
    bool offer(std::string_view text, std::chrono::milliseconds patience);
    // Waits for exactly so many bytes; fewer when the console ended the connection.
    std::string receive(std::size_t size);
    // Waits for a whole reply, its end mark included.
    std::string receive_reply();
    // Whether the console ended the connection (true) or sent something else (false). Waits for either.
    bool ended();

    // No more to send; the other direction stays.
    void finish();
    void close();
    // Ends the connection with a reset.
    void reset();

private:
    int socket_ = -1;
};

// Whether this test has a network of its own, as the host allows it (own_network.sh).
bool has_own_network();
// Whether the console is refused files that nobody may read. By proot a user gets them, if they are his own.
bool has_forbidden_files();
// From now on no packet reaches anybody, in the network of this test.
void cut_network();

}  // namespace support
