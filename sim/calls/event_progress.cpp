// Whether a program is done with an event, in memory that it shares with the device.
#include "sim/calls/event_progress.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace sim {

// Sealed, so that no program takes the memory from under the device.
EventProgress EventProgress::make(Descriptor& file) {
    Descriptor made(::memfd_create("r47-event", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!made || ::ftruncate(made.get(), sizeof(State)) != 0 ||
        ::fcntl(made.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_SEAL) != 0) {
        return {};
    }
    EventProgress progress(made);
    if (progress.state_ != nullptr) {
        file = std::move(made);
    }
    return progress;
}

EventProgress::EventProgress(Descriptor const& file) {
    if (file) {
        void* const memory = ::mmap(nullptr, sizeof(*state_), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
        state_ = memory != MAP_FAILED ? static_cast<std::atomic<State>*>(memory) : nullptr;
    }
}

EventProgress::~EventProgress() {
    if (state_ != nullptr) {
        ::munmap(state_, sizeof(*state_));
    }
}

void EventProgress::begin() {
    if (state_ != nullptr) {
        *state_ = State::running;
    }
}

bool EventProgress::is_over() {
    State found = State::running;
    return state_ != nullptr && !state_->compare_exchange_strong(found, State::awaited) && found == State::over;
}

bool EventProgress::end() {
    State found = State::running;
    return state_ == nullptr || !state_->compare_exchange_strong(found, State::over);
}

}  // namespace sim
