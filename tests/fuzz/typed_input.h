// Standard input of the fuzzers: what is typed, played back read by read; and the console's sleeps, which take no time.
#pragma once

#include <chrono>
#include <string_view>

// Takes the place of read() and isatty() for descriptor 0, and of nanosleep() on the thread that called use(): the
// fuzzers are linked with --wrap for all three.
namespace typed_input {

// Bytes of a script that stand for something other than themselves.
constexpr char kEnd = '\x04';        // Ctrl-D on a terminal; elsewhere an end of input, behind which more may come
constexpr char kInterrupt = '\x05';  // a signal interrupts the read
constexpr char kSplit = '\x06';      // one read ends here and the next one begins

// Makes descriptor 0 always readable and sleeps on this thread timeless. To be called once, first of all.
void use();

// What the next reads find. Behind the script's end the input has ended, a terminal by a hang-up.
void play(std::string_view script, bool terminal);

bool all_played();

// The sleeps since this was asked last.
int sleeps();
// The length of the last sleep.
std::chrono::nanoseconds last_sleep();

// Called for each sleep on this thread instead of sleeping; empty: none.
extern void (*on_sleep)(std::chrono::nanoseconds length);

}  // namespace typed_input
