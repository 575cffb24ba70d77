// The six digital I/O pins: configuration, values, and what the outside does to them.
#include "sim/models/digital_io.h"

#include <algorithm>

#include "sim/models/refusal.h"

namespace sim {

namespace {

using config_t = hal::dio_pin_config_t;
using func_t = config_t::pin_func;
using type_t = config_t::pin_type;

template <typename Enum>
bool is_between(Enum value, Enum first, Enum last) {
    return value >= first && value <= last;
}

bool is_valid(config_t const& config) {
    return is_between(config.type, type_t::npn, type_t::push_pull) &&
           is_between(config.func, func_t::output, func_t::quadrature_input_b) &&
           is_between(config.config, config_t::pin_config::normally_open, config_t::pin_config::normally_closed) &&
           config.on_delay_time >= 0 && config.off_delay_time >= 0 && config.pulse_time >= 0;
}

std::optional<Duration> time_if(bool active, int time_ms) {
    return active ? std::optional<Duration>(std::chrono::milliseconds(time_ms)) : std::nullopt;
}

PinTiming timing_of(config_t const& config) {
    return {time_if(config.on_delay_active, config.on_delay_time),
            time_if(config.off_delay_active, config.off_delay_time), time_if(config.pulse_active, config.pulse_time)};
}

}  // namespace

bool DigitalIo::Pin::is_input() const {
    return config.func != func_t::output && config.func != func_t::illumination_output;
}

bool DigitalIo::Pin::turned_round() const {
    return config.invert != (config.config == config_t::pin_config::normally_closed);
}

bool DigitalIo::Pin::signal(bool exposing) const {
    switch (config.func) {
        case func_t::output:
            return command;
        case func_t::illumination_output:
            return exposing;
        default:
            return wire != turned_round();
    }
}

bool DigitalIo::Pin::value() const {
    return is_input() ? timer.state() : timer.state() != turned_round();
}

int DigitalIo::set_config(unsigned char pin, config_t const& config) {
    if (pin >= kPins || !is_valid(config)) {
        return refuse(EINVAL);
    }
    Pin& configured = pins_[pin];
    configured.config = config;
    configured.timer.reset(timing_of(config), configured.signal(exposing_));
    settle_quadrature();
    return 0;
}

int DigitalIo::get_config(unsigned char pin, config_t& config) const {
    if (pin >= kPins) {
        return refuse(EINVAL);
    }
    config = pins_[pin].config;
    return 0;
}

int DigitalIo::set_value(unsigned char pin, bool value, Time now) {
    if (pin >= kPins || pins_[pin].config.func != func_t::output) {
        return refuse(EINVAL);
    }
    pins_[pin].command = value;
    apply(pins_[pin], now);
    return 0;
}

int DigitalIo::get_value(unsigned char pin, bool& value) const {
    if (pin >= kPins) {
        return refuse(EINVAL);
    }
    value = powered_ && pins_[pin].value();
    return 0;
}

std::bitset<DigitalIo::kPins> DigitalIo::values() const {
    std::bitset<kPins> values;
    for (unsigned char pin = 0; pin < kPins; ++pin) {
        values[pin] = powered_ && pins_[pin].value();
    }
    return values;
}

void DigitalIo::set_powered(bool powered) {
    powered_ = powered;
    settle_quadrature();
}

unsigned int DigitalIo::drive(unsigned char pin, bool high, Time now) {
    pins_[pin].wire = high;
    return apply(pins_[pin], now);
}

void DigitalIo::set_exposing(bool exposing, Time now) {
    exposing_ = exposing;
    for (Pin& pin : pins_) {
        if (pin.config.func == func_t::illumination_output) {
            apply(pin, now);
        }
    }
}

std::optional<Time> DigitalIo::next_change() const {
    std::optional<Time> next;
    for (Pin const& pin : pins_) {
        std::optional<Time> const due = pin.timer.next_change();
        if (due && (!next || *due < *next)) {
            next = due;
        }
    }
    return next;
}

unsigned int DigitalIo::change() {
    std::optional<Time> const next = next_change();
    auto const due =
        std::find_if(pins_.begin(), pins_.end(), [next](Pin const& pin) { return pin.timer.next_change() == next; });
    bool const before = due->value();
    due->timer.change();
    return took_effect(*due, before);
}

unsigned int DigitalIo::apply(Pin& pin, Time now) {
    bool const before = pin.value();
    pin.timer.set_signal(pin.signal(exposing_), now);
    return took_effect(pin, before);
}

unsigned int DigitalIo::took_effect(Pin const& pin, bool value_before) {
    if (!powered_ || pin.value() == value_before) {
        return 0;
    }
    count_quadrature();
    return pin.config.func == func_t::trigger_input && pin.value() ? 1 : 0;
}

// One count for each edge: up while A leads B.
void DigitalIo::count_quadrature() {
    bool const a = first_value_of(func_t::quadrature_input_a);
    bool const b = first_value_of(func_t::quadrature_input_b);
    if (a != encoder_a_) {
        encoder_position_ += a != b ? 1 : -1;
    } else if (b != encoder_b_) {
        encoder_position_ += a == b ? 1 : -1;
    }
    settle_quadrature();
}

// Takes the values as having been there for ever: what moved while nobody looked is not counted.
void DigitalIo::settle_quadrature() {
    encoder_a_ = first_value_of(func_t::quadrature_input_a);
    encoder_b_ = first_value_of(func_t::quadrature_input_b);
}

// Of several pins with one encoder function the first counts.
bool DigitalIo::first_value_of(func_t func) const {
    auto const found =
        std::find_if(pins_.begin(), pins_.end(), [func](Pin const& pin) { return pin.config.func == func; });
    return found != pins_.end() && found->value();
}

DigitalIo::Terminal DigitalIo::terminal(unsigned char number) const {
    Pin const& pin = pins_[number];
    if (pin.is_input()) {
        return pin.wire ? Terminal::high : Terminal::low;
    }
    if (!powered_) {
        return Terminal::open;
    }
    switch (pin.config.type) {
        case type_t::npn:
            return pin.value() ? Terminal::low : Terminal::open;
        case type_t::pnp:
            return pin.value() ? Terminal::high : Terminal::open;
        default:
            return pin.value() ? Terminal::high : Terminal::low;
    }
}

}  // namespace sim
