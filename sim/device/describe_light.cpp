// The properties of the illumination and the autofocus module.
#include "sim/core/numbers.h"
#include "sim/device/describe.h"

namespace sim {

namespace {

using Setting = Illumination::Setting;
using Guard = unsigned char hal::illu_guards::*;

constexpr double kDegreeParts = 1000;  // the sensors' own degree is a whole one
constexpr double kStepParts = 1000;    // the motor moves so much of a step in a microsecond

void add_settings(Properties& properties, Illumination& light) {
    auto const add = [&](char const* name, char const* help, Setting setting) {
        Limits const& limits = Illumination::limits_of(setting);
        properties.add(
            name, help, [&light, setting] { return light.setting(setting); },
            [&light, setting](unsigned int value) { return light.put(setting, value); }, limits.min, limits.max);
    };
    add("illumination.segments", "mask, one bit per segment, 0-15", Setting::segments);
    add("illumination.brightness.total", "0-14", Setting::brightness);
    add("illumination.brightness.red", "percent", Setting::red);
    add("illumination.brightness.green", "percent", Setting::green);
    add("illumination.brightness.blue", "percent", Setting::blue);
    add("illumination.limit.dc", "highest brightness of steady light, 0-14", Setting::dc_limit);
    add("illumination.limit.flash", "highest brightness of a flash, 0-14", Setting::flash_limit);
    add("illumination.limit.ot_off", "C, at which the guard switches the light off, 40-100", Setting::ot_off_limit);
    add("illumination.limit.ot_decrease", "K below that limit, at which the light comes back, 1-30",
        Setting::ot_decrease);
}

void add_switches(Properties& properties, Illumination& light) {
    auto const add_guard = [&](char const* name, char const* help, Guard guard) {
        properties.add(
            name, help, [&light, guard] { return light.guards().*guard != 0; },
            [&light, guard](bool on) {
                hal::illu_guards guards = light.guards();
                guards.*guard = on ? 1 : 0;
                light.put_guards(guards);
            });
    };
    auto const add_led = [&](char const* name, Illumination::Led led) {
        properties.add(
            name, "indicator LED", [&light, led] { return light.led(led); },
            [&light, led](bool on) { light.set_led(led, on); });
    };
    properties.add(
        "illumination.write_protection", "the library's limits and guards are refused while it is on",
        [&light] { return light.write_protected(); }, [&light](bool on) { light.set_write_protection(on); });
    add_guard("illumination.guards.ot", "over-temperature guard", &hal::illu_guards::over_temperature);
    add_guard("illumination.guards.dvs", "kept, without effect", &hal::illu_guards::dvs);
    add_guard("illumination.guards.autocal", "kept, without effect", &hal::illu_guards::autocal);
    add_guard("illumination.guards.pvd", "kept, without effect", &hal::illu_guards::pvd);
    add_led("illumination.led.red", Illumination::red_led);
    add_led("illumination.led.green", Illumination::green_led);
    add_led("illumination.led.alter", Illumination::alter_led);
}

void add_temperatures(Properties& properties, Illumination& light) {
    properties.add(
        "illumination.temperature.internal", "C, inside, -40 to 125; set: goes on from there",
        [&light] { return to_nearest_part(light.internal_temperature(), kDegreeParts); },
        [&light](double temperature) { return light.set_internal_temperature(temperature); }, "out of range");
    properties.add(
        "illumination.temperature.external", "C, outside, -40 to 125; set: goes on from there",
        [&light] { return to_nearest_part(light.external_temperature(), kDegreeParts); },
        [&light](double temperature) { return light.set_external_temperature(temperature); }, "out of range");
    properties.add(
        "illumination.temperature.ambient", "C, of the surroundings, -40 to 125",
        [&light] { return light.ambient_temperature(); },
        [&light](double temperature) { return light.set_ambient_temperature(temperature); }, Illumination::kColdest,
        Illumination::kHottest);
}

void add_flags(Properties& properties, Illumination& light) {
    Illumination::Disturbances& disturbances = light.disturbances;
    properties.add_variable("illumination.flags.low_power", "set by hand", disturbances.low_power);
    properties.add_variable("illumination.flags.driver_error", "set by hand", disturbances.driver_error);
    properties.add_variable("illumination.flags.calibration_error", "set by hand", disturbances.calibration_error);
    properties.add_variable("illumination.flags.dvsc", "set by hand", disturbances.dvsc);
    properties.add_variable("illumination.flags.bc", "set by hand", disturbances.bc);
    properties.add("illumination.flags.trigger_overflow", "the flash is longer than the triggers are apart",
                   [&light] { return light.flags().trigger_overflow != 0; });
    properties.add("illumination.flags.over_temperature", "from the off limit until it has cooled by the decrease",
                   [&light] { return light.flags().over_temperature != 0; });
    properties.add("illumination.error_code", "number of the gravest flag; 0: none",
                   [&light] { return light.error_code(); });
}

void add_errors(Properties& properties, Autofocus const& focus) {
    auto const add = [&](char const* name, char const* help, auto get) {
        properties.add(name, help, [&focus, get] { return get(focus.errors()) != 0; });
    };
    using Errors = hal::af_error;
    add("autofocus.error.no_valid_frequency", "no calibration has found one",
        [](Errors const& errors) { return errors.no_valid_frequency; });
    add("autofocus.error.initialization", "the reset did not reach its end",
        [](Errors const& errors) { return errors.initialization_error; });
    add("autofocus.error.motor_stuck", "no motion for 500 ms", [](Errors const& errors) { return errors.motor_stuck; });
    add("autofocus.error.target_unreachable", "the last position was refused",
        [](Errors const& errors) { return errors.target_unreachable; });
    add("autofocus.error.mirror_failure", "the calibration found the mirror bad",
        [](Errors const& errors) { return errors.mirror_failure; });
    add("autofocus.error.no_mirror", "there is no mirror", [](Errors const& errors) { return errors.no_mirror; });
    add("autofocus.error.communication", "the module could not be talked to",
        [](Errors const& errors) { return errors.communication_error; });
    add("autofocus.error.empty_table", "there is no calibration table",
        [](Errors const& errors) { return errors.empty_calibration_table; });
}

}  // namespace

void describe(Properties& properties, Illumination& light) {
    properties.add(
        "illumination.present", "whether the module is fitted; it comes back as after power-on",
        [&light] { return light.present(); }, [&light](bool present) { light.set_present(present); });
    properties.add_variable("illumination.rgbw", "whether it has colours; otherwise it is white", light.module.rgbw);
    add_temperatures(properties, light);
    add_flags(properties, light);
    properties.add("illumination.lit", "whether it gives light", [&light] { return light.lit(); });
    properties.add("illumination.load", "heat that it makes; 1: that of full steady light",
                   [&light] { return light.load(); });
    properties.add("illumination.exposure.mode", "0 continuous, 65534 flash, 65535 switch",
                   [&light] { return light.exposure_mode(); });
    properties.add("illumination.exposure.time", "us, of the flash", [&light] { return light.flash_time(); });
    properties.add(
        "illumination.pattern", "0 continuous, 65535 strobe", [&light] { return light.pattern(); },
        [&light](hal::light_pattern_te pattern) { return light.set_pattern(pattern); }, "not a pattern");
    properties.add(
        "illumination.mode", "0 inactive, 1 active", [&light] { return light.mode(); },
        [&light](hal::illumination_mode_te mode) { return light.set_mode(mode); }, hal::illumination_mode_te::inactive,
        hal::illumination_mode_te::active);
    add_settings(properties, light);
    add_switches(properties, light);
}

void describe(Properties& properties, Autofocus& focus) {
    properties.add(
        "autofocus.present", "whether the module is fitted; it comes back as after power-on",
        [&focus] { return focus.present(); }, [&focus](bool present) { focus.set_present(present); });
    properties.add(
        "autofocus.device_type", "R47XXXX1, R47XXXX2 or R47XXXX3, or its last digit: whose table holds",
        [&focus] { return focus.device_type(); },
        [&focus](std::string const& name) { return focus.set_device_type(name); }, "not a device type");
    properties.add_variable("autofocus.link", "whether the module can be talked to", focus.module.link_up);
    properties.add_variable("autofocus.motor.free", "whether the motor can move; otherwise it is stuck",
                            focus.module.motor_free);
    properties.add_variable("autofocus.mirror.fitted", "whether there is a mirror", focus.module.mirror_fitted);
    properties.add_variable("autofocus.mirror.healthy", "whether the mirror swings", focus.module.mirror_healthy);
    properties.add_variable("autofocus.table.filled", "whether there is a calibration table",
                            focus.module.table_filled);
    properties.add("autofocus.position", "steps", [&focus] { return to_nearest_part(focus.position(), kStepParts); });
    properties.add(
        "autofocus.target", "steps, where the motor goes", [&focus] { return focus.target(); },
        [&focus](unsigned int target) { return focus.put_position(target); }, "the motor cannot go there now");
    properties.add("autofocus.moving", "whether the motor is on its way", [&focus] { return focus.moving(); });
    properties.add("autofocus.calibrating", "whether the calibration runs", [&focus] { return focus.calibrating(); });
    properties.add("autofocus.frequency", "Hz, that the calibration found; 0: none",
                   [&focus] { return focus.calibration_frequency().value_or(0); });
    properties.add(
        "autofocus.doe.mode", "0 disabled, 1 enabled and off by the trigger", [&focus] { return focus.doe_mode(); },
        [&focus](hal::doe_mode_te mode) { return focus.set_doe_mode(mode); }, hal::doe_mode_te::disabled,
        hal::doe_mode_te::off_by_trigger);
    properties.add(
        "autofocus.doe.forced", "active whatever its mode", [&focus] { return focus.doe_forced(); },
        [&focus](bool forced) { focus.set_doe_force_active(forced); });
    properties.add(
        "autofocus.maintenance", "the limits are the mechanical stops", [&focus] { return focus.maintenance_mode(); },
        [&focus](bool enabled) { focus.set_maintenance_mode(enabled); });
    add_errors(properties, focus);
}

}  // namespace sim
