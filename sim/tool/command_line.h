// The command line of r47-sim.
#pragma once

#include <string>
#include <vector>

#include "sim/tool/control.h"
#include "sim/tool/fleet.h"
#include "sim/tool/journal_files.h"
#include "sim/tool/panel.h"
#include "sim/tool/run.h"
#include "sim/tool/running_device.h"

namespace sim {

struct CommandLine {
    enum class Task { none, run, fleet, device, list, panel, control, show_journal, diff_journals };

    Task task = Task::none;
    int status = 0;  // of none: help was printed, or what is wrong
    RunOptions run;
    FleetOptions fleet;
    DeviceOptions device;
    PanelOptions panel;
    ControlOptions control;
    std::vector<std::string> journals;  // files
    JournalFilter filter;
    bool with_times = false;
};

// Prints help and version where they are asked for, and what it does not understand.
CommandLine read_command_line(std::vector<std::string> const& words);

}  // namespace sim
