// What the terminal at standard output can show.
#include "sim/tool/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace sim {

namespace {

std::string environment(char const* name) {
    char const* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

std::size_t terminal_width() {
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool terminal_has_colours() {
    std::string const kind = environment("TERM");
    return ::isatty(STDOUT_FILENO) != 0 && environment("NO_COLOR").empty() && !kind.empty() && kind != "dumb";
}

}  // namespace sim
