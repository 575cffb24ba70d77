// Threads that take part in the turns.
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace orders {

constexpr char const* kMainThread = "main";
// The one that the console starts, which is its client's.
constexpr char const* kMenuThread = "menu";

// Starts one of this name. The console's takes part too.
std::thread start_thread(std::string const& name, std::function<void()> run);

}  // namespace orders
