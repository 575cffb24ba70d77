// Starts threads that leave the signals to the program.
#pragma once

#include <functional>
#include <thread>

namespace sim {

// A thread that runs `body` with all signals blocked: they are the program's. `name`: up to 15 characters.
// Throws std::system_error where the host has none left.
std::thread start_thread_without_signals(char const* name, std::function<void()> body);

}  // namespace sim
