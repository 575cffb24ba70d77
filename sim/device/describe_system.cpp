// The properties of the device's state and of what each module tells about itself.
#include "sim/device/describe.h"

namespace sim {

namespace {

struct NamedModule {
    Module module;
    char const* name;
};

NamedModule const kNamedModules[kModules] = {
    {Module::rtu, "rtu"},   {Module::illumination, "illumination"},       {Module::autofocus, "autofocus"},
    {Module::gyro, "gyro"}, {imx296_facts().module, imx296_facts().name}, {imx567_facts().module, imx567_facts().name},
};

}  // namespace

void describe(Properties& properties, SystemState& system, std::function<Time()> const& now) {
    using State = hal::device_state_te;
    properties.add(
        "system.state",
        About("state shown to the user")
            .among({choice(State::boot, "boot"), choice(State::confirm, "confirm"), choice(State::running, "running"),
                    choice(State::find_me, "find_me"), choice(State::warning, "warning"), choice(State::error, "error"),
                    choice(State::preview_network_reset, "preview_network_reset"),
                    choice(State::preview_localize, "preview_localize")}),
        [&system] { return system.state(); }, [&system](State state) { return system.set_state(state); });
    properties.add("system.heartbeat.count", "heartbeats since the start", [&system] { return system.heartbeats(); });
    properties.add("system.heartbeat.last", About("time of the last heartbeat; 0: none yet", "s"),
                   [&system] { return static_cast<double>(system.last_heartbeat().count()) / 1e6; });
    properties.add(
        "system.heartbeat.timeout", About("after the last heartbeat, until the software counts as dead", "ms"),
        [&system] { return system.heartbeat_timeout(); },
        [&system](unsigned int timeout_ms) { system.set_heartbeat_timeout(timeout_ms); });
    properties.add("system.alive", "whether there was a heartbeat within the timeout",
                   [&system, now] { return system.alive(now()); });
}

void describe(Properties& properties, ModuleInfo& modules) {
    for (auto const& [module, name] : kNamedModules) {
        ModuleInfo::Info& info = modules.of(module);
        std::string const branch = std::string(name) + ".";
        std::string const revision = branch + "revision.";
        properties.add_variable(branch + "status", "status byte of the module", info.status);
        properties.add_variable(revision + "major", "revision, major number", info.revision.major);
        properties.add_variable(revision + "minor", "revision, minor number", info.revision.minor);
        properties.add_variable(revision + "patch", "revision, patch level", info.revision.patch);
        properties.add_variable(revision + "num", "revision, build of that week", info.revision.num);
        properties.add_variable(revision + "year", "revision, year in two digits", info.revision.year);
        properties.add_variable(revision + "week", "revision, calendar week", info.revision.week);
        properties.add_variable(branch + "serial_number", "serial number of the module", info.serial_number);
    }
}

}  // namespace sim
