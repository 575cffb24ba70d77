// What a run leaves behind: all that its threads did, in the order in which they did it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orders {

constexpr std::size_t kMostThreads = 32;     // of a run; none has more than a dozen
constexpr std::size_t kThreadName = 32;      // characters, with the end
constexpr std::size_t kMostText = 1U << 20;  // bytes of events; a run has some ten thousand

enum class EventKind : char { turn, call, callback, output, reply };

// Lies in memory that the run shares with who started it, so that it is there however the run ends. Written by the
// thread whose turn it is.
struct Record {
    std::size_t threads = 0;
    char names[kMostThreads][kThreadName] = {};
    std::uint64_t order = 0;  // of all turns, as a hash
    std::size_t turns = 0;
    std::size_t callbacks = 0;
    char failure[4096] = "";
    std::size_t size = 0;
    char events[kMostText] = {};  // thread, kind, length in two bytes, text; one behind the other
};

// Calls see(thread, kind, text) with each event.
template <typename See>
void for_each_event(Record const& record, See see) {
    for (std::size_t at = 0; at < record.size;) {
        auto const byte = [&](std::size_t offset) { return static_cast<unsigned char>(record.events[at + offset]); };
        std::size_t const length = byte(2) + 256U * byte(3);
        see(std::size_t{byte(0)}, static_cast<EventKind>(byte(1)), std::string_view(record.events + at + 4, length));
        at += 4 + length;
    }
}

}  // namespace orders
