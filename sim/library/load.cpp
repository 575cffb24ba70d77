// Starts the device when the library is loaded, as the environment says.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "sim/control/command.h"
#include "sim/control/scenario.h"
#include "sim/control/server.h"
#include "sim/device/device.h"

namespace {

using sim::Device;
using sim::Error;

std::string environment(char const* name) {
    char const* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

// A program must not run in a device that is not what was asked for.
void end_on(Error const& error) {
    if (!error.empty()) {
        std::fprintf(stderr, "libhal: %s\n", error.c_str());
        std::_Exit(2);
    }
}

void start_journal(Device& device) {
    std::string const path = environment("R47_SIM_JOURNAL");
    if (!path.empty()) {
        end_on(device.journal.open(path));
    }
}

void start_clock(Device& device) {
    std::string const setting = environment("R47_SIM_CLOCK");
    if (!setting.empty()) {
        sim::Reply const reply = sim::device_commands().run({device, {}}, "clock " + setting);
        end_on(reply.ok ? "" : reply.text);
    }
}

void start_scenario(Device& device) {
    std::string const path = environment("R47_SIM_SCENARIO");
    if (!path.empty()) {
        sim::Scenario scenario;
        end_on(sim::load_scenario(path, scenario, device.nodes.missing()));
        end_on(sim::start_scenario(scenario, device));
    }
}

// A second program in the same device's place runs without control, and says so.
void start_control(Device& device) {
    std::string const path = environment("R47_SIM_CONTROL");
    if (path.empty()) {
        return;
    }
    // Never destroyed, as the device.
    static auto& server = *new sim::Server(device, sim::device_commands());
    Error const error = server.start(path);
    if (error.empty()) {
        std::atexit([] { server.stop(); });
    } else {
        std::fprintf(stderr, "libhal: no control: %s\n", error.c_str());
    }
}

__attribute__((constructor)) void start() {
    Device& device = Device::instance();
    start_journal(device);
    start_clock(device);
    start_scenario(device);
    start_control(device);
}

}  // namespace
