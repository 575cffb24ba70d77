// r47-sim: runs programs inside the virtual device and controls devices that run.
#include <cstdio>
#include <string>
#include <vector>

#include "sim/control/command.h"
#include "sim/tool/control.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/proot.h"
#include "sim/tool/publisher.h"
#include "sim/tool/run.h"
#include "sim/tool/running_device.h"

namespace {

char const* const kUsage =
    "usage: r47-sim run [OPTION...] -- COMMAND [ARG...]   runs COMMAND inside a virtual device\n"
    "       r47-sim device [OPTION...]                    runs a device until a signal ends it\n"
    "       r47-sim list                                  the devices that run, and their programs\n"
    "       r47-sim [OPTION...] CONTROL-COMMAND           gives a running device a command\n"
    "       r47-sim [OPTION...] -                         gives it the commands on standard input\n"
    "       r47-sim help                                  this text\n"
    "\n"
    "Options of run and device:\n"
    "  --name NAME          of the device; with a slash, its directory\n"
    "  --without PATH       leave out this file of the device; may be repeated\n"
    "  --journal FILE       write a line for each call of the library\n"
    "  --json-journal       the lines as JSON\n"
    "  --scenario FILE      commands that the device carries out by itself\n"
    "  --clock SETTING      real, scaled FACTOR or stepped\n"
    "Options of run alone:\n"
    "  --device NAME        run COMMAND in this running device, not in one of its own\n"
    "  --private-network    a network of its own, with nothing but a loopback interface\n"
    "  --publish PORT       the same, but the console in it is reached at 127.0.0.1:PORT of this host\n"
    "  --require-faults     fail where a fault rule never fired\n"
    "Options of control commands:\n"
    "  --device NAME        this running device, not the only one there is\n"
    "  --timeout DURATION   fail where it has not answered by then\n"
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
        return sim::kNotUnderstood;
    }
    if (words.front() == "help" || words.front() == "--help") {
        return help();
    }
    if (words.front() == "run") {
        return sim::run_command({words.begin() + 1, words.end()});
    }
    if (words.front() == "device") {
        return sim::run_device({words.begin() + 1, words.end()});
    }
    if (words == std::vector<std::string>{"list"}) {
        return sim::list_devices();
    }
    if (words.front() == sim::kInsideProot && words.size() > 1) {
        return sim::run_inside_proot({words.begin() + 1, words.end()});
    }
    if (words.front() == sim::kPublished && words.size() > 2) {
        return sim::run_published({words.begin() + 1, words.end()});
    }
    return sim::control(words);
}
