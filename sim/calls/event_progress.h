// Whether a program is done with an event, in memory that it shares with the device.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "sim/core/descriptor.h"

namespace sim {

// Spares the message and the two switches of threads that tell the end of an event where nobody waits for it, which is
// so for most samples. Of one lane, in which one event runs at a time. The program may write there what it likes: that
// tells the device no more than a Done of its would.
class EventProgress {
public:
    // Without memory: each end is told by a Done.
    EventProgress() = default;
    // For the device; `file` is what the program is given. Without memory, and without a file, where the host has none.
    static EventProgress make(Descriptor& file);
    // For the program. Without memory where there is no file, or the host has none.
    explicit EventProgress(Descriptor const& file);
    EventProgress(EventProgress&& other) noexcept : state_(std::exchange(other.state_, nullptr)) {}
    EventProgress& operator=(EventProgress&& other) noexcept {
        std::swap(state_, other.state_);
        return *this;
    }
    EventProgress(EventProgress const&) = delete;
    EventProgress& operator=(EventProgress const&) = delete;
    ~EventProgress();

    // The device is about to send an event.
    void begin();
    // Whether the program was done with it before the device first asked; from then on its Done comes.
    bool is_over();
    // The program is done with the event. Whether the device waits for the Done.
    bool end();

private:
    enum class State : std::uint32_t { running, awaited, over };
    static_assert(std::atomic<State>::is_always_lock_free, "two processes use it");

    std::atomic<State>* state_ = nullptr;
};

}  // namespace sim
