// "r47-sim panel": shows a device's front panel to a browser.
#include "sim/tool/panel.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "sim/tool/execute.h"
#include "sim/tool/exit_status.h"

namespace sim {

int run_panel(PanelOptions const& options) {
    std::error_code failed;
    std::string const own = std::filesystem::read_symlink("/proc/self/exe", failed);
    Arguments arguments = {std::filesystem::path(own).replace_filename("r47-panel")};
    auto const pass = [&arguments](char const* name, std::string const& value) {
        if (!value.empty()) {
            arguments.insert(arguments.end(), {name, value});
        }
    };
    pass("--device", options.device);
    pass("--port", options.port);
    pass("--beside", options.beside);
    execute(arguments);
    return fail(kFailed, "cannot start " + arguments.front() + ": " + std::strerror(errno) +
                             "; a build with -DR47_PANEL=ON has it");
}

}  // namespace sim
