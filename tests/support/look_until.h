// What only a look can tell: whether something has come about.
#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace support {

// What no working run ever reaches; a test that waits longer has failed.
constexpr std::chrono::seconds kLimit{60};

constexpr std::chrono::milliseconds kRetry{2};  // between two looks

// Looks until `done` says so. Throws std::runtime_error, which says `what` it waited for, at the limit.
template <typename Done>
void look_until(Done done, std::string const& what) {
    auto const deadline = std::chrono::steady_clock::now() + kLimit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("limit reached waiting for " + what);
        }
        std::this_thread::sleep_for(kRetry);
    }
}

}  // namespace support
