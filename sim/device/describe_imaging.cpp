// The properties of the real-time unit, its digital I/O, the camera and the image sensors.
#include "sim/device/describe.h"

namespace sim {

namespace {

constexpr char const* kOutOfRange = "out of range";

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
    auto const add = [&](char const* field_name, char const* help, auto config_t::*field) {
        properties.add(
            name + field_name, help, [&unit, pin, field] { return unit.pins().config(pin).*field; },
            [configure, field](auto value) {
                return configure([field, value](config_t& config) { config.*field = value; });
            },
            kOutOfRange);
    };
    add("type", "0 npn, 1 pnp, 2 push-pull", &config_t::type);
    add("func", "0 output, 1 illumination output, 2 input, 3 trigger input, 4 and 5 encoder A and B", &config_t::func);
    add("contact", "0 normally open, 1 normally closed", &config_t::config);
    add("invert", "whether the pin is inverted", &config_t::invert);
    add("on_delay.active", "whether it comes on late", &config_t::on_delay_active);
    add("on_delay.time", "ms", &config_t::on_delay_time);
    add("off_delay.active", "whether it goes off late", &config_t::off_delay_active);
    add("off_delay.time", "ms", &config_t::off_delay_time);
    add("pulse.active", "whether it comes on for a time of its own", &config_t::pulse_active);
    add("pulse.time", "ms", &config_t::pulse_time);
    properties.add(
        name + "line", "GPIO line that the record tells; -1: none",
        [&unit, pin] { return line_of(unit.pins().config(pin), pin); },
        [configure, pin](int line) {
            return configure([pin, line](config_t& config) { config.pin_lines[pin] = line; });
        },
        kOutOfRange);
    properties.add(
        name + "command", "value that was set for the output", [&unit, pin] { return unit.pins().command(pin); },
        [&unit, pin](bool value) { return unit.set_pin_value(pin, value); }, "the pin is no output");
    properties.add(name + "value", "value that is read from the pin",
                   [&unit, pin] { return unit.pins().values().test(pin); });
    properties.add(name + "terminal", "low, high or open: the wire of an input, the driver of an output",
                   [&unit, pin] { return name_of(unit.pins().terminal(pin)); });
}

}  // namespace

void describe(Properties& properties, RealTimeUnit& unit) {
    properties.add(
        "rtu.imager_type", "0 none, 1 IMX296, 2 IMX567", [&unit] { return unit.imager_type(); },
        [&unit](hal::imx_te type) { return unit.set_imager_type(type); }, kOutOfRange);
    properties.add(
        "rtu.prohibited_time", "us after a trigger in which the next one is missed",
        [&unit] { return unit.prohibited_time(); },
        [&unit](unsigned int time_us) { return unit.set_prohibited_time(time_us); }, kOutOfRange);
    properties.add(
        "rtu.exposure.offset", "us from the trigger to the exposure", [&unit] { return unit.exposure_offset(); },
        [&unit](unsigned int offset_us) { return unit.set_exposure_offset(offset_us); }, kOutOfRange);
    properties.add(
        "rtu.exposure.time", "us, within the limits of the imager", [&unit] { return unit.exposure(); },
        [&unit](unsigned int exposure_us) { return unit.set_exposure(exposure_us); }, kOutOfRange);
    properties.add(
        "rtu.trigger.continuous", "whether the unit triggers by itself", [&unit] { return unit.continuous(); },
        [&unit](bool continuous) { return unit.set_continuous(continuous); }, kOutOfRange);
    properties.add(
        "rtu.trigger.rate", "of the unit itself, frames per second, within the limits of the imager",
        [&unit] { return unit.rate(); }, [&unit](unsigned int fps) { return unit.set_rate(fps); }, kOutOfRange);
    properties.add("rtu.trigger.count", "triggers since the start, from everywhere",
                   [&unit] { return unit.triggers(); });
    properties.add("rtu.trigger.missed", "triggers that were missed since the last reset",
                   [&unit] { return unit.missed_triggers(); });
    properties.add("rtu.trigger.missed_frame", "frame that was running when the last one was missed",
                   [&unit] { return unit.missed_frame(); });
    properties.add(
        "rtu.power", "what supplies the device: 24v or poe", [&unit] { return unit.supply(); },
        [&unit](Supply supply) { unit.set_supply(supply); });
    properties.add("rtu.lightbar.brightness", "of the light bar, percent",
                   [&unit] { return unit.light_bar().brightness; });
    properties.add("rtu.lightbar.red", "0-255", [&unit] { return unit.light_bar().red; });
    properties.add("rtu.lightbar.green", "0-255", [&unit] { return unit.light_bar().green; });
    properties.add("rtu.lightbar.blue", "0-255", [&unit] { return unit.light_bar().blue; });
    properties.add("camera.acquiring", "whether the camera takes over the sensor's frames",
                   [&unit] { return unit.acquiring(); });
    properties.add("camera.acquired", "frames taken over since the start", [&unit] { return unit.acquired(); });
    for (unsigned char pin = 0; pin < DigitalIo::kPins; ++pin) {
        describe_pin(properties, unit, pin);
    }
    properties.add("dio.encoder", "position of the quadrature encoder, edges",
                   [&unit] { return unit.pins().encoder_position(); });
}

void describe(Properties& properties, ImageSensor& sensor) {
    std::string const name = sensor.facts().name;
    properties.add(
        name + ".colour", "variant: 0 monochrome, 1 colour", [&sensor] { return sensor.variant(); },
        [&sensor](unsigned int variant) { return sensor.set_variant(variant); }, 0U, ImageSensor::kMaxVariant);
    properties.add(
        name + ".gain", "0.1 dB, 0 to " + std::to_string(sensor.facts().max_gain), [&sensor] { return sensor.gain(); },
        [&sensor](unsigned int gain) { return sensor.set_gain(gain); }, "beyond the sensor's gain");
    properties.add(name + ".roi.x", "left edge of the region of interest, pixels",
                   [&sensor] { return sensor.roi_x(); });
    properties.add(name + ".roi.y", "upper edge of the region of interest, pixels",
                   [&sensor] { return sensor.roi_y(); });
    properties.add(name + ".scan_mode", "0 normal, 1 subsampling, 2 binning", [&sensor] { return sensor.scan_mode(); });
    properties.add(name + ".frames", "frames taken since the start", [&sensor] { return sensor.frames(); });
}

}  // namespace sim
