// Options and help of r47-sim and of the program that it becomes.
#include "sim/tool/options.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <utility>
#include <vector>

#include "sim/core/suggestion.h"

namespace sim {

namespace {

class Formatter : public CLI::Formatter {
public:
    explicit Formatter(std::string usage) : usage_(std::move(usage)) {}

    std::string make_usage(CLI::App const*, std::string) const override { return usage_; }

private:
    std::string const usage_;
};

}  // namespace

void describe(CLI::App& app, std::string const& usage) {
    app.formatter(std::make_shared<Formatter>(usage));
    app.set_help_flag("-h,--help", "prints this help");
}

std::string unknown_option(CLI::App const& app, std::string const& word) {
    std::vector<std::string> names;
    for (CLI::Option const* const option : app.get_options()) {
        names.push_back(option->get_name());
    }
    return "unknown option " + word + did_you_mean(word, names, ": try r47-sim help");
}

void add_panel_options(CLI::App& app, PanelOptions& options) {
    app.add_option("--device", options.device, "this running device, not the only one there is")->type_name("NAME");
    app.add_option("--port", options.port, "the address's port, not any that is free")->type_name("N");
    app.add_option("--beside", options.beside, "in the background, until that process ends")->type_name("PID");
}

}  // namespace sim
