// The least program that does what the console does before its first menu: it needs the library, opens a unit with it,
// says so, and has the shell prepare the lines. What it takes, no console with that library can do without.
#include <cstdlib>
#include <iostream>

#include "bench/first_menu.h"
#include "hal/rtu.h"

namespace {

hal::rtu_t const rtu("/dev/r47-rtu-driver", 2);

}  // namespace

int main() {
    std::cout << "System calls" << std::endl;
    bench::run_shell_commands();
    std::cout << bench::kFirstPrompt << std::flush;
    return std::getchar();
}
