// The six digital I/O pins: configuration, values, and what the outside does to them.
#include "sim/models/digital_io.h"

#include <algorithm>

#include "sim/models/refusal.h"

namespace sim {

namespace {

using config_t = hal::dio_pin_config_t;
using func_t = config_t::pin_func;
using type_t = config_t::pin_type;

bool exists(unsigned char pin) {
    return pin < DigitalIo::kPins;
}

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

bool DigitalIo::Pin::wire_active() const {
    bool const active_level = config.type != type_t::npn;
    return wire == active_level;
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
            return wire_active() != turned_round();
    }
}

bool DigitalIo::Pin::value() const {
    return is_input() ? timer.state() : timer.state() != turned_round();
}

int DigitalIo::set_config(unsigned char pin, config_t const& config) {
    if (!exists(pin) || !is_valid(config)) {
        return refuse(EINVAL);
    }
    pins_[pin].config = config;
    settle(pins_[pin]);
    settle_quadrature();
    return 0;
}

int DigitalIo::get_config(unsigned char pin, config_t& config) const {
    if (!exists(pin)) {
        return refuse(EINVAL);
    }
    config = pins_[pin].config;
    return 0;
}

int DigitalIo::set_value(unsigned char pin, bool value, Time now) {
    if (!exists(pin) || pins_[pin].config.func != func_t::output) {
        return refuse(EINVAL);
    }
    pins_[pin].command = value;
    apply(pins_[pin], now);
    return 0;
}

int DigitalIo::get_value(unsigned char pin, bool& value) const {
    if (!exists(pin)) {
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
    if (powered == powered_) {
        return;
    }
    powered_ = powered;
    for (Pin& pin : pins_) {
        settle(pin);
    }
    settle_quadrature();
}

void DigitalIo::lose_power() {
    DigitalIo fresh;
    for (unsigned char pin = 0; pin < kPins; ++pin) {
        fresh.pins_[pin].wire = pins_[pin].wire;
    }
    fresh.set_powered(powered_);
    *this = fresh;
}

unsigned int DigitalIo::drive(unsigned char pin, std::optional<bool> high, Time now) {
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

void DigitalIo::settle(Pin& pin) {
    pin.timer.reset(timing_of(pin.config), pin.signal(exposing_));
}

bool DigitalIo::repeats(DigitalIo const& earlier, Duration period) const {
    auto const is_same = [&](Pin const& now, Pin const& then) { return now.timer.repeats(then.timer, period); };
    return exposing_ == earlier.exposing_ && encoder_position_ == earlier.encoder_position_ &&
           std::equal(pins_.begin(), pins_.end(), earlier.pins_.begin(), is_same);
}

void DigitalIo::postpone(Duration length) {
    for (Pin& pin : pins_) {
        pin.timer.postpone(length);
    }
}

unsigned int DigitalIo::apply(Pin& pin, Time now) {
    if (!powered_) {
        return 0;
    }
    bool const before = pin.value();
    pin.timer.set_signal(pin.signal(exposing_), now);
    return took_effect(pin, before);
}

unsigned int DigitalIo::took_effect(Pin const& pin, bool value_before) {
    if (pin.value() == value_before) {
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
        return !pin.wire ? Terminal::open : *pin.wire ? Terminal::high : Terminal::low;
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
