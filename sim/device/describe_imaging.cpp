// The properties of the real-time unit, its digital I/O, the camera and the image sensors.
#include "sim/device/describe.h"

namespace sim {

namespace {

constexpr double kLongestTime = std::numeric_limits<int>::max();  // ms

char const* name_of(DigitalIo::Terminal terminal) {
    switch (terminal) {
        case DigitalIo::Terminal::low:
            return "low";
        case DigitalIo::Terminal::high:
            return "high";
        case DigitalIo::Terminal::open:
            break;
    }
    return "open";
}

// -1 where the record of the pin tells none.
int line_of(hal::dio_pin_config_t const& config, unsigned char pin) {
    auto const line = config.pin_lines.find(pin);
    return line != config.pin_lines.end() ? line->second : -1;
}

// The pin's record, field by field, and what comes of it.
void describe_pin(Properties& properties, RealTimeUnit& unit, unsigned char pin) {
    using config_t = hal::dio_pin_config_t;
    std::string const name = "dio." + std::to_string(pin) + ".";
    auto const configure = [&unit, pin](auto const& change) {
        config_t config = unit.pins().config(pin);
        change(config);
        return unit.set_pin_config(pin, config);
    };
    auto const add = [&](char const* field_name, About const& about, auto config_t::*field) {
        properties.add(
            name + field_name, about, [&unit, pin, field] { return unit.pins().config(pin).*field; },
            [configure, field](auto value) {
                return configure([field, value](config_t& config) { config.*field = value; });
            });
    };
    using type_t = config_t::pin_type;
    using func_t = config_t::pin_func;
    using contact_t = config_t::pin_config;
    add("type",
        About("how an output drives its terminal")
            .among({choice(type_t::npn, "npn"), choice(type_t::pnp, "pnp"), choice(type_t::push_pull, "push_pull")}),
        &config_t::type);
    add("func",
        About("what the pin is for")
            .among({choice(func_t::output, "output"), choice(func_t::illumination_output, "illumination_output"),
                    choice(func_t::input, "input"), choice(func_t::trigger_input, "trigger_input"),
                    choice(func_t::quadrature_input_a, "encoder_a"), choice(func_t::quadrature_input_b, "encoder_b")}),
        &config_t::func);
    add("contact",
        About("its contact logic")
            .among({choice(contact_t::normally_open, "normally_open"),
                    choice(contact_t::normally_closed, "normally_closed")}),
        &config_t::config);
    add("invert", "whether the pin is inverted", &config_t::invert);
    add("on_delay.active", "whether it comes on late", &config_t::on_delay_active);
    add("on_delay.time", About("how late it comes on", "ms").within(0, kLongestTime), &config_t::on_delay_time);
    add("off_delay.active", "whether it goes off late", &config_t::off_delay_active);
    add("off_delay.time", About("how late it goes off", "ms").within(0, kLongestTime), &config_t::off_delay_time);
    add("pulse.active", "whether it comes on for a time of its own", &config_t::pulse_active);
    add("pulse.time", About("how long it then is on", "ms").within(0, kLongestTime), &config_t::pulse_time);
    properties.add(
        name + "line", "GPIO line that the record tells; -1: none",
        [&unit, pin] { return line_of(unit.pins().config(pin), pin); },
        [configure, pin](int line) {
            return configure([pin, line](config_t& config) { config.pin_lines[pin] = line; });
        });
    properties.add(
        name + "command", About("value that was set for the output").unless("the pin is no output"),
        [&unit, pin] { return unit.pins().command(pin); },
        [&unit, pin](bool value) { return unit.set_pin_value(pin, value); });
    properties.add(name + "value", "value that is read from the pin",
                   [&unit, pin] { return unit.pins().values().test(pin); });
    properties.add(name + "terminal",
                   About("the wire of an input, the driver of an output")
                       .among({{"low", "low"}, {"high", "high"}, {"open", "open"}}),
                   [&unit, pin] { return name_of(unit.pins().terminal(pin)); });
}

}  // namespace

std::vector<Choice> imager_choices() {
    return {choice(hal::imx_te::none, "none"), choice(hal::imx_te::imx296, imx296_facts().name),
            choice(hal::imx_te::imx567, imx567_facts().name)};
}

void describe(Properties& properties, RealTimeUnit& unit) {
    properties.add(
        "rtu.imager_type", About("imager by which the unit limits rate and exposure").among(imager_choices()),
        [&unit] { return unit.imager_type(); }, [&unit](hal::imx_te type) { return unit.set_imager_type(type); });
    properties.add(
        "rtu.prohibited_time", About("after a trigger, in which the next one is missed", "us"),
        [&unit] { return unit.prohibited_time(); },
        [&unit](unsigned int time_us) { return unit.set_prohibited_time(time_us); });
    properties.add(
        "rtu.exposure.offset", About("from the trigger to the exposure", "us"),
        [&unit] { return unit.exposure_offset(); },
        [&unit](unsigned int offset_us) { return unit.set_exposure_offset(offset_us); });
    properties.add(
        "rtu.exposure.time", About("length of an exposure, within the limits of the imager", "us").within([&unit] {
            return ValueRange{static_cast<double>(unit.limits().min_us), static_cast<double>(unit.limits().max_us)};
        }),
        [&unit] { return unit.exposure(); },
        [&unit](unsigned int exposure_us) { return unit.set_exposure(exposure_us); });
    properties.add(
        "rtu.trigger.continuous", "whether the unit triggers by itself", [&unit] { return unit.continuous(); },
        [&unit](bool continuous) { return unit.set_continuous(continuous); });
    properties.add(
        "rtu.trigger.rate", About("of the unit itself, within the limits of the imager", "fps").within([&unit] {
            return ValueRange{static_cast<double>(kLeastFps), static_cast<double>(unit.limits().max_fps)};
        }),
        [&unit] { return unit.rate(); }, [&unit](unsigned int fps) { return unit.set_rate(fps); });
    properties.add("rtu.trigger.count", "triggers since the start, from everywhere",
                   [&unit] { return unit.triggers(); });
    properties.add("rtu.trigger.missed", "triggers that were missed since the last reset",
                   [&unit] { return unit.missed_triggers(); });
    properties.add("rtu.trigger.missed_frame", "frame that was running when the last one was missed",
                   [&unit] { return unit.missed_frame(); });
    properties.add(
        "rtu.power",
        About("what supplies the device")
            .among({{Supply::dc_24v, name_of(Supply::dc_24v)}, {Supply::poe, name_of(Supply::poe)}}),
        [&unit] { return unit.supply(); }, [&unit](Supply supply) { unit.set_supply(supply); });
    properties.add("rtu.lightbar.brightness", About("of the light bar", "percent").within(0, 100),
                   [&unit] { return unit.light_bar().brightness; });
    properties.add("rtu.lightbar.red", About("share of red in its light").within(0, 255),
                   [&unit] { return unit.light_bar().red; });
    properties.add("rtu.lightbar.green", About("share of green in its light").within(0, 255),
                   [&unit] { return unit.light_bar().green; });
    properties.add("rtu.lightbar.blue", About("share of blue in its light").within(0, 255),
                   [&unit] { return unit.light_bar().blue; });
    properties.add("camera.acquiring", "whether the camera takes over the sensor's frames",
                   [&unit] { return unit.acquiring(); });
    properties.add("camera.acquired", "frames taken over since the start", [&unit] { return unit.acquired(); });
    for (unsigned char pin = 0; pin < DigitalIo::kPins; ++pin) {
        describe_pin(properties, unit, pin);
    }
    properties.add("dio.encoder", About("position of the quadrature encoder", "edges"),
                   [&unit] { return unit.pins().encoder_position(); });
}

void describe(Properties& properties, ImageSensor& sensor) {
    std::string const name = sensor.facts().name;
    SensorFacts const& facts = sensor.facts();
    auto const add_edge = [&](char const* field, char const* help, unsigned int size, auto get, auto set) {
        properties.add(name + field, About(help, "pixels").within(0, size - facts.roi_grid, facts.roi_grid), get, set);
    };
    properties.add(
        name + ".colour", About("variant of the sensor").among({{0LL, "monochrome"}, {1LL, "colour"}}),
        [&sensor] { return sensor.variant(); },
        [&sensor](unsigned int variant) { return sensor.set_variant(variant); });
    properties.add(
        name + ".gain", About("amplification", "dB/10").within(0, facts.max_gain), [&sensor] { return sensor.gain(); },
        [&sensor](unsigned int gain) { return sensor.set_gain(gain); });
    properties.add(
        name + ".roi", About("upper left corner of the region of interest", "pixels").unless("beyond the sensor"),
        [&sensor] {
            return Pixel{sensor.roi_x(), sensor.roi_y()};
        },
        [&sensor](Pixel const& corner) { return sensor.set_roi_offset(corner.x, corner.y); });
    add_edge(
        ".roi.x", "left edge of the region of interest", facts.width, [&sensor] { return sensor.roi_x(); },
        [&sensor](unsigned int x) { return sensor.set_roi_offset(x, sensor.roi_y()); });
    add_edge(
        ".roi.y", "upper edge of the region of interest", facts.height, [&sensor] { return sensor.roi_y(); },
        [&sensor](unsigned int y) { return sensor.set_roi_offset(sensor.roi_x(), y); });
    properties.add(
        name + ".scan_mode",
        About("how the sensor is read")
            .among({choice(hal::roi_te::normal, "normal"), choice(hal::roi_te::subsampling, "subsampling"),
                    choice(hal::roi_te::binning, "binning")}),
        [&sensor] { return sensor.scan_mode(); }, [&sensor](hal::roi_te mode) { return sensor.set_scan_mode(mode); });
    properties.add(name + ".frames", "frames taken since the start", [&sensor] { return sensor.frames(); });
}

}  // namespace sim
