// The end of the whole console from within a component menu.
#include "app/exit_console.h"

#include <cstdlib>
#include <iostream>

void exit_console() {
    std::cout << "\n\033[0mGood Bye\n";
    std::exit(0);
}
