// The six digital I/O pins: configuration, values, and what the outside does to them.
#pragma once

#include <array>
#include <bitset>
#include <optional>

#include "hal/dio_pin_config.h"
#include "sim/core/clock.h"
#include "sim/models/pin_timer.h"

namespace sim {

// A pin's state follows its signal through the delays and the pulse. The signal of an input is whether its wire is
// active, taken through the contact logic (normally closed turns it round) and the inversion; that of an output is
// its command, that of an illumination output the exposure, and here contact logic and inversion turn the result
// round. The type (npn, pnp, push-pull) decides how an output drives its terminal, and which level of a wire is active:
// low with npn, whose sensor pulls the wire down, otherwise high. A wire that nobody drives is pulled the other way.
//
// Without the 24 V every pin reads false and nothing moves: no timer runs, no edge counts. When it comes, the pins take
// what is there as having been there for ever.
//
// Operations refuse (-1, EINVAL) pins above 5 and what a pin cannot do, and keep the old value. Times given to them
// never go backwards, and what is due must have been carried out (change()) before.
class DigitalIo {
public:
    static constexpr unsigned char kPins = 6;

    // What the terminal of a pin carries: the wire of an input, the driver of an output.
    enum class Terminal { low, high, open };

    int set_config(unsigned char pin, hal::dio_pin_config_t const& config);
    int get_config(unsigned char pin, hal::dio_pin_config_t& config) const;
    // Only an output takes a value.
    int set_value(unsigned char pin, bool value, Time now);
    int get_value(unsigned char pin, bool& value) const;
    std::bitset<kPins> values() const;
    // These three take one of the six pins.
    hal::dio_pin_config_t const& config(unsigned char pin) const { return pins_[pin].config; }
    // The value that was set for the output.
    bool command(unsigned char pin) const { return pins_[pin].command; }
    Terminal terminal(unsigned char pin) const;
    // Of the quadrature encoder, in edges.
    long long encoder_position() const { return encoder_position_; }

    // The 24 V.
    void set_powered(bool powered);
    bool powered() const { return powered_; }
    // Forgets all but the 24 V and the levels on the wires: the device's own power has gone.
    void lose_power();
    // Puts a level on the wire of a pin, or none; only inputs take notice. Returns how many trigger inputs became
    // active.
    unsigned int drive(unsigned char pin, std::optional<bool> high, Time now);
    // Illumination outputs follow the exposure.
    void set_exposing(bool exposing, Time now);

    // When the next pin changes by itself.
    std::optional<Time> next_change() const;
    // Carries that change out. Returns how many trigger inputs became active.
    unsigned int change();

    // Whether all pins are, in one configuration, what they were in `earlier` a period ago.
    bool repeats(DigitalIo const& earlier, Duration period) const;
    // What is due comes so much later.
    void postpone(Duration length);

private:
    struct Pin {
        hal::dio_pin_config_t config;
        PinTimer timer;
        std::optional<bool> wire{};  // high, low, or driven by nobody
        bool command = false;

        bool is_input() const;
        bool wire_active() const;
        bool turned_round() const;
        bool signal(bool exposing) const;
        bool value() const;
    };

    void settle(Pin& pin);
    unsigned int apply(Pin& pin, Time now);
    unsigned int took_effect(Pin const& pin, bool value_before);
    void count_quadrature();
    void settle_quadrature();
    bool first_value_of(hal::dio_pin_config_t::pin_func func) const;

    std::array<Pin, kPins> pins_;
    bool powered_ = true;
    bool exposing_ = false;
    bool encoder_a_ = false;
    bool encoder_b_ = false;
    long long encoder_position_ = 0;
};

}  // namespace sim
