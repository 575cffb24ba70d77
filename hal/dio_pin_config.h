// The configuration record of one digital I/O pin, and the tables of the six pins.
#pragma once

#include <array>
#include <map>

namespace hal {

struct dio_pin_config_t {
    enum class pin_type : int { npn = 0, pnp = 1, push_pull = 2 };
    enum class pin_func : int {
        output = 0,
        illumination_output = 1,
        input = 2,
        trigger_input = 3,
        quadrature_input_a = 4,
        quadrature_input_b = 5,
    };
    enum class pin_config : int { normally_open = 0, normally_closed = 1 };

    // The driver's index of each pin.
    enum class ioctl_pins : int { pin0 = 0, pin1 = 1, pin2 = 2, pin3 = 3, pin4 = 4, pin5 = 5 };
    // The GPIO line of each pin, in the order of the pins.
    enum class gpiod_lines : int { pin0 = 46, pin1 = 48, pin2 = 18, pin3 = 17, pin4 = 19, pin5 = 20 };

    pin_type type = pin_type::npn;
    pin_func func = pin_func::output;
    pin_config config = pin_config::normally_open;
    bool invert = false;
    bool on_delay_active = false;
    bool off_delay_active = false;
    bool pulse_active = false;
    int on_delay_time = 0;                                                               // ms
    int off_delay_time = 0;                                                              // ms
    int pulse_time = 0;                                                                  // ms
    std::map<int, int> pin_lines{{0, 46}, {1, 48}, {2, 18}, {3, 17}, {4, 19}, {5, 20}};  // pin index to GPIO line
};

namespace registered_enum {

// All enumerators of a registered enumeration, in the order of their declaration.
template <typename Enum>
struct enum_traits;

template <>
struct enum_traits<dio_pin_config_t::ioctl_pins> {
    using pins = dio_pin_config_t::ioctl_pins;
    static constexpr std::array<pins, 6> values{pins::pin0, pins::pin1, pins::pin2, pins::pin3, pins::pin4, pins::pin5};
};

template <>
struct enum_traits<dio_pin_config_t::gpiod_lines> {
    using lines = dio_pin_config_t::gpiod_lines;
    static constexpr std::array<lines, 6> values{lines::pin0, lines::pin1, lines::pin2,
                                                 lines::pin3, lines::pin4, lines::pin5};
};

}  // namespace registered_enum
}  // namespace hal
