// r47-sim: runs programs inside the virtual device and controls devices that run.
#include <cstdio>
#include <string>
#include <vector>

#include "sim/control/command.h"
#include "sim/tool/control.h"
#include "sim/tool/proot.h"
#include "sim/tool/run.h"

namespace {

char const* const kUsage =
    "usage: r47-sim run [OPTION...] -- COMMAND [ARG...]   runs COMMAND inside the virtual device\n"
    "       r47-sim [--control SOCKET] CONTROL-COMMAND    gives a running device a command\n"
    "       r47-sim [--control SOCKET] -                  gives it the commands on standard input\n"
    "       r47-sim help                                  this text\n"
    "\n"
    "Options of run:\n"
    "  --without PATH       leave out this file of the device; may be repeated\n"
    "  --journal FILE       write a line for each call of the library\n"
    "  --scenario FILE      commands that the device carries out by itself\n"
    "  --control SOCKET     serve control commands here\n"
    "  --clock SETTING      real, scaled FACTOR or stepped\n"
    "  --private-network    a network of its own, with nothing but a loopback interface\n"
    "\n"
    "Control commands:\n";

int help() {
    std::printf("%s%s", kUsage, sim::device_commands().help().c_str());
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    std::vector<std::string> const words(argv + 1, argv + argc);
    if (words.empty()) {
        std::fprintf(stderr, "%s%s", kUsage, sim::device_commands().help().c_str());
        return 2;
    }
    if (words.front() == "help" || words.front() == "--help") {
        return help();
    }
    if (words.front() == "run") {
        return sim::run_in_sandbox({words.begin() + 1, words.end()});
    }
    if (words.front() == sim::kInsideProot && words.size() > 1) {
        return sim::run_inside_proot({words.begin() + 1, words.end()});
    }
    return sim::control(words);
}
