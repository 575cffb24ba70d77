// "r47-sim panel": shows a device's front panel to a browser.
#pragma once

#include <string>

namespace sim {

// As r47-panel reads them; empty where they are not given.
struct PanelOptions {
    std::string device;
    std::string port;
    std::string beside;
};

// Becomes the program r47-panel beside this one: its libraries would more than double the time in which every other
// command starts. Returns only where that cannot be, with the exit status.
int run_panel(PanelOptions const& options);

}  // namespace sim
