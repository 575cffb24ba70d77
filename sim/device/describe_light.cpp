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
    auto const add = [&](char const* name, About const& about, Setting setting) {
        Limits const& limits = Illumination::limits_of(setting);
        properties.add(
            name, about.within(limits.min, limits.max), [&light, setting] { return light.setting(setting); },
            [&light, setting](unsigned int value) { return light.put(setting, value); });
    };
    add("illumination.segments", "segments that give light, one bit each", Setting::segments);
    add("illumination.brightness.total", "brightness of the white light", Setting::brightness);
    add("illumination.brightness.red", About("share of red", "percent"), Setting::red);
    add("illumination.brightness.green", About("share of green", "percent"), Setting::green);
    add("illumination.brightness.blue", About("share of blue", "percent"), Setting::blue);
    add("illumination.limit.dc", "highest brightness of steady light", Setting::dc_limit);
    add("illumination.limit.flash", "highest brightness of a flash", Setting::flash_limit);
    add("illumination.limit.ot_off", About("at which the guard switches the light off", "C"), Setting::ot_off_limit);
    add("illumination.limit.ot_decrease", About("below that limit, at which the light comes back", "K"),
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
    auto const add = [&](char const* name, char const* help, auto get, auto set) {
        properties.add(name, About(help, "C").within(Illumination::kColdest, Illumination::kHottest), get, set);
    };
    add(
        "illumination.temperature.internal", "inside; set: goes on from there",
        [&light] { return to_nearest_part(light.internal_temperature(), kDegreeParts); },
        [&light](double temperature) { return light.set_internal_temperature(temperature); });
    add(
        "illumination.temperature.external", "outside; set: goes on from there",
        [&light] { return to_nearest_part(light.external_temperature(), kDegreeParts); },
        [&light](double temperature) { return light.set_external_temperature(temperature); });
    add(
        "illumination.temperature.ambient", "of the surroundings", [&light] { return light.ambient_temperature(); },
        [&light](double temperature) { return light.set_ambient_temperature(temperature); });
}

void add_flags(Properties& properties, Illumination& light) {
    Illumination::Disturbances& disturbances = light.disturbances;
    properties.add_variable("illumination.flags.low_power", "set by hand alone", disturbances.low_power);
    properties.add_variable("illumination.flags.driver_error", "set by hand alone", disturbances.driver_error);
    properties.add_variable("illumination.flags.calibration_error", "set by hand alone",
                            disturbances.calibration_error);
    properties.add_variable("illumination.flags.dvsc", "set by hand alone", disturbances.dvsc);
    properties.add_variable("illumination.flags.bc", "set by hand alone", disturbances.bc);
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

ValueRange position_range(Autofocus const& focus) {
    unsigned short min = 0;
    unsigned short max = 0;
    focus.get_position_limits(min, max);
    return {static_cast<double>(min), static_cast<double>(max)};
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
    properties.add(
        "illumination.exposure.mode",
        About("when it gives light")
            .among({choice(hal::exposure_mode::continuous, "continuous"), choice(hal::exposure_mode::flash, "flash"),
                    choice(hal::exposure_mode::switched, "switched")}),
        [&light] { return light.exposure_mode(); });
    properties.add("illumination.exposure.time", About("of the flash", "us"), [&light] { return light.flash_time(); });
    properties.add(
        "illumination.pattern",
        About("whether it follows the exposures")
            .among({choice(hal::light_pattern_te::continuous, "continuous"),
                    choice(hal::light_pattern_te::strobe, "strobe")}),
        [&light] { return light.pattern(); },
        [&light](hal::light_pattern_te pattern) { return light.set_pattern(pattern); });
    properties.add(
        "illumination.mode",
        About("whether the module works")
            .among({choice(hal::illumination_mode_te::inactive, "inactive"),
                    choice(hal::illumination_mode_te::active, "active")}),
        [&light] { return light.mode(); }, [&light](hal::illumination_mode_te mode) { return light.set_mode(mode); });
    add_settings(properties, light);
    add_switches(properties, light);
}

void describe(Properties& properties, Autofocus& focus) {
    properties.add(
        "autofocus.present", "whether the module is fitted; it comes back as after power-on",
        [&focus] { return focus.present(); }, [&focus](bool present) { focus.set_present(present); });
    properties.add(
        "autofocus.device_type",
        About("whose table holds; its last digit will do")
            .among({{"R47XXXX1", "R47XXXX1"}, {"R47XXXX2", "R47XXXX2"}, {"R47XXXX3", "R47XXXX3"}})
            .unless("not a device type"),
        [&focus] { return focus.device_type(); },
        [&focus](std::string const& name) { return focus.set_device_type(name); });
    properties.add_variable("autofocus.link", "whether the module can be talked to", focus.module.link_up);
    properties.add_variable("autofocus.motor.free", "whether the motor can move; otherwise it is stuck",
                            focus.module.motor_free);
    properties.add_variable("autofocus.mirror.fitted", "whether there is a mirror", focus.module.mirror_fitted);
    properties.add_variable("autofocus.mirror.healthy", "whether the mirror swings", focus.module.mirror_healthy);
    properties.add_variable("autofocus.table.filled", "whether there is a calibration table",
                            focus.module.table_filled);
    properties.add("autofocus.position", About("where the motor is", "steps"),
                   [&focus] { return to_nearest_part(focus.position(), kStepParts); });
    properties.add(
        "autofocus.target",
        About("where the motor goes", "steps")
            .within([&focus] { return position_range(focus); })
            .unless("the motor cannot go there now"),
        [&focus] { return focus.target(); }, [&focus](unsigned int target) { return focus.put_position(target); });
    properties.add("autofocus.moving", "whether the motor is on its way", [&focus] { return focus.moving(); });
    properties.add("autofocus.calibrating", "whether the calibration runs", [&focus] { return focus.calibrating(); });
    properties.add("autofocus.frequency", About("that the calibration found; 0: none", "Hz"),
                   [&focus] { return focus.calibration_frequency().value_or(0); });
    properties.add(
        "autofocus.doe.mode",
        About("whether the DOE shines but while a trigger exposes")
            .among({choice(hal::doe_mode_te::disabled, "disabled"),
                    choice(hal::doe_mode_te::off_by_trigger, "off_by_trigger")}),
        [&focus] { return focus.doe_mode(); }, [&focus](hal::doe_mode_te mode) { return focus.set_doe_mode(mode); });
    properties.add(
        "autofocus.doe.forced", "active whatever its mode", [&focus] { return focus.doe_forced(); },
        [&focus](bool forced) { focus.set_doe_force_active(forced); });
    properties.add(
        "autofocus.maintenance", "the limits are the mechanical stops", [&focus] { return focus.maintenance_mode(); },
        [&focus](bool enabled) { focus.set_maintenance_mode(enabled); });
    add_errors(properties, focus);
}

}  // namespace sim
