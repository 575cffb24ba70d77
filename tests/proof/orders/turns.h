// Lets one thread of the process run at a time; which one is next, a seed tells.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tests/proof/orders/record.h"

namespace orders {

// Small, and the same on every host.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next();
    // Below `end`.
    std::uint64_t below(std::uint64_t end) { return next() % end; }

private:
    std::uint64_t state_;
};

// The same seed gives the same order of all turns, as long as the threads do nothing but what the turns before told
// them. A seed also tells how often the order changes: from each third turn to each hundredth, for some faults need
// many changes, and others one at the right place and none after it.
//
// Only threads that take part are kept in turn; for any other these functions do nothing. The sanitizer sees none of
// it.

// The caller takes part from now on and has the first turn. Once in a process.
void begin_turns(std::uint64_t seed, Record& record);

// A thread of this name may take part: its number. It calls enter(), and leave() as its last.
std::size_t admit(std::string_view name);
void enter(std::size_t thread);
void leave();
bool takes_part();
// Whether a thread of this number, or of this name, has left.
bool has_left(std::size_t thread);
bool has_left(std::string_view name);
// Whether a thread of this name waits; and for that which it gave as `what`.
bool waits(std::string_view name);
bool waits_for(std::string_view name, char const* what);

// Gives the turn to whom the seed tells, maybe back to the caller. `what` says what the caller is about to do.
void take_turn(char const* what);
// Gives the turn away until another thread has done something. Where all threads wait so, the run has failed.
void wait_for_others(char const* what);

// For the thread whose turn it is.
void write_event(EventKind kind, std::string_view text);
// Ends the process.
[[noreturn]] void fail_run(std::string_view what);

// Returns as soon as `is_done` says so, which it is asked in turns.
template <typename IsDone>
void wait_until(char const* what, IsDone is_done) {
    take_turn(what);
    while (!is_done()) {
        wait_for_others(what);
    }
}

}  // namespace orders
