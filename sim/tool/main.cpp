// r47-sim: runs programs inside the virtual device and controls devices that run.
#include <string>
#include <vector>

#include "sim/tool/command_line.h"
#include "sim/tool/proot.h"
#include "sim/tool/publisher.h"

int main(int argc, char* argv[]) {
    std::vector<std::string> const words(argv + 1, argv + argc);
    // How it starts itself inside a sandbox.
    if (words.size() > 1 && words.front() == sim::kInsideProot) {
        return sim::run_inside_proot({words.begin() + 1, words.end()});
    }
    if (words.size() > 2 && words.front() == sim::kPublished) {
        return sim::run_published({words.begin() + 1, words.end()});
    }
    sim::CommandLine const line = sim::read_command_line(words);
    switch (line.task) {
        case sim::CommandLine::Task::none:
            break;
        case sim::CommandLine::Task::run:
            return sim::run_command(line.run);
        case sim::CommandLine::Task::fleet:
            return sim::run_fleet(line.fleet);
        case sim::CommandLine::Task::device:
            return sim::run_device(line.device);
        case sim::CommandLine::Task::list:
            return sim::list_devices();
        case sim::CommandLine::Task::panel:
            return sim::run_panel(line.panel);
        case sim::CommandLine::Task::control:
            return sim::control(line.control);
        case sim::CommandLine::Task::show_journal:
            return sim::show_journal(line.journals.front(), line.filter);
        case sim::CommandLine::Task::diff_journals:
            return sim::diff_journals(line.journals.front(), line.journals.back(), line.with_times);
    }
    return line.status;
}
