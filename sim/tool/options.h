// Options and help of r47-sim and of the program that it becomes.
#pragma once

#include <string>

#include "sim/tool/panel.h"

namespace CLI {
class App;
}

namespace sim {

// Gives `app` its help, which begins with `usage`.
void describe(CLI::App& app, std::string const& usage);
// What is said of a word that is none of its options, with the nearest that is.
std::string unknown_option(CLI::App const& app, std::string const& word);

void add_panel_options(CLI::App& app, PanelOptions& options);

}  // namespace sim
