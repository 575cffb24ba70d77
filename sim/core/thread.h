// Starts the library's own threads.
#pragma once

#include <functional>
#include <thread>

namespace sim {

// A thread that runs `body` with all signals blocked: they are the program's. `name`: up to 15 characters.
std::thread start_library_thread(char const* name, std::function<void()> body);

}  // namespace sim
