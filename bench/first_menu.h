// What stands between the console's start and its first menu.
#pragma once

#include <cstdlib>

namespace bench {

constexpr char const* kFirstPrompt = "\nPlease enter your option: ";

inline void run_shell_commands() {
    for (char const* command : {"echo 481 > /sys/class/gpio/export", "echo 492 > /sys/class/gpio/unexport"}) {
        [[maybe_unused]] int const result = std::system(command);
    }
}

}  // namespace bench
