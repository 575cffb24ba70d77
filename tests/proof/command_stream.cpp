// An endless conversation of a well-behaved station, and every reply that it is owed.
#include "tests/proof/command_stream.h"

#include <cstdlib>

namespace proof {

namespace {

constexpr int kPins = 6;
constexpr int kRefused = -1;

}  // namespace

void CommandStream::add_command(std::string& lines, std::string& replies) {
    lines_ = &lines;
    replies_ = &replies;
    if (menu_ == &menus::kDio) {
        return dio_command();
    }
    if (menu_ == &menus::kCamera) {
        return camera_command();
    }
    if (menu_ == &menus::kButton) {
        return button_command();
    }
    main_command();
}

void CommandStream::add_rest(std::string& lines, std::string& replies) {
    lines_ = &lines;
    replies_ = &replies;
    if (menu_ != &menus::kMain) {
        leave();
    }
    enter(menus::kDio);
    read_all_pins();
}

// A line may hold more than the option, and end in several ways.
void CommandStream::key(char option) {
    constexpr char const* kEnds[] = {"\n", "\r\n", "\\n", " and more\n", "\n\n"};
    *lines_ += option;
    *lines_ += kEnds[below(5)];
}

// The echo is what the line held.
void CommandStream::number(std::string const& text) {
    constexpr char const* kEnds[] = {"\n", "\r\n", "\\n", "\\r\n"};
    *lines_ += text + kEnds[below(4)];
    *replies_ += text;
}

void CommandStream::send_reply() {
    *replies_ += waiting_ + "\\n";
    waiting_.clear();
}

void CommandStream::enter(menus::Menu const& menu) {
    key(menu.key);
    menu_ = &menu;
}

void CommandStream::leave() {
    key('x');
    menu_ = &menus::kMain;
}

void CommandStream::main_command() {
    switch (below(10)) {
        case 0:
        case 1:
            return enter(menus::kDio);
        case 2:
            return enter(menus::kCamera);
        case 3:
            return enter(menus::kButton);
        case 4:
            return key("LsDO"[below(4)]);  // nothing, in socket mode
        default:
            key('A');
            item(0);
            return send_reply();
    }
}

void CommandStream::dio_command() {
    switch (below(16)) {
        case 0:
            return leave();
        case 1:
            return set_pin_config();
        case 2:
        case 3:
            return read_pin_config();
        case 4:
        case 5:
        case 6:
            return set_pin_value();
        case 7:
        case 8:
        case 9:
            return get_pin_value();
        case 10:
            key("oO"[below(2)]);
            return item(0);
        case 11:
            return key("123Gjklmn?"[below(10)]);
        default:
            return read_all_pins();
    }
}

// An output without delays, which has the value it was given. One pin in seven is refused.
void CommandStream::set_pin_config() {
    Pin pin{below(3), below(1000), below(1000), below(1000), false};
    int const index = below(kPins + 1);
    key('f');
    for (int const value : {index, pin.type, 0, 0, 0, 0, pin.off_delay_time, 0, pin.on_delay_time, 0, pin.pulse_time}) {
        number(value);
    }
    if (index < kPins) {
        Pin& configured = pins_[static_cast<std::size_t>(index)];
        pin.value = configured.value;
        configured = pin;
    }
    item(index < kPins ? 0 : kRefused);
    send_reply();
}

void CommandStream::read_pin_config() {
    int const index = below(kPins);
    Pin const& pin = pins_[static_cast<std::size_t>(index)];
    key('F');
    number(index);
    for (int const value : {index, pin.type, 0, 0, 0, 0, pin.off_delay_time, 0, pin.on_delay_time, 0, pin.pulse_time}) {
        item(value);
    }
    send_reply();
}

// The library sees the low eight bits of the pin; any number above 0 is high.
void CommandStream::set_pin_value() {
    int const index = below(kPins + 1);
    int const value = below(5) - 2;
    key('h');
    number(index + 256 * below(2));
    number(value);
    if (index < kPins) {
        pins_[static_cast<std::size_t>(index)].value = value > 0;
    }
    item(index < kPins ? 0 : kRefused);
    send_reply();
}

void CommandStream::get_pin_value() {
    int const index = below(kPins + 1);
    int const value = index < kPins && pins_[static_cast<std::size_t>(index)].value ? 1 : 0;
    key('H');
    number(index);
    item(value);
    item(value);
    send_reply();
}

void CommandStream::read_all_pins() {
    key('p');
    int values = 0;
    for (std::size_t i = 0; i < kPins; ++i) {
        values |= pins_[i].value ? 1 << i : 0;
    }
    item(values);
    send_reply();
}

void CommandStream::camera_command() {
    switch (below(12)) {
        case 0:
        case 1:
            return leave();
        case 2:
            key('u');
            return number(1 + below(60));
        case 3:
        case 4:
            return set_offset();
        case 5:
            key('s');
            return item(0);
        case 6:
            key('S');
            return number(below(3));
        default:
            return key("mtTWULvVefwiJkzZ?"[below(17)]);
    }
}

// Text that is no number stands for 20, which is on the grid of 4 pixels as 8 is; 7 is not.
void CommandStream::set_offset() {
    constexpr char const* kOffsets[] = {"8", "many", "7"};
    int const x = below(3);
    int const y = below(3);
    key('j');
    number(kOffsets[x]);
    number(kOffsets[y]);
    item(x == 2 || y == 2 ? kRefused : 0);
}

void CommandStream::button_command() {
    if (below(3) == 0) {
        return leave();
    }
    key('r');
    item(0);
    send_reply();
}

}  // namespace proof
