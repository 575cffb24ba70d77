// An endless conversation of a well-behaved station, and every reply that it is owed.
#pragma once

#include <array>
#include <random>
#include <string>
#include <vector>

#include "tests/support/menus.h"

namespace proof {

// Visits the device check and the menus that a client drives, in a random order that the seed fixes. Knows the
// digital I/O and the line protocol well enough to tell each byte that comes back.
class CommandStream {
public:
    explicit CommandStream(unsigned int seed) : random_(seed) {}

    // Appends the lines of one more command and the bytes that answer it.
    void add_command(std::string& lines, std::string& replies);
    // Appends what leads to the digital I/O menu and ends with an answer: behind it the console rests.
    void add_rest(std::string& lines, std::string& replies);

private:
    struct Pin {
        int type = 0;
        int off_delay_time = 0;
        int on_delay_time = 0;
        int pulse_time = 0;
        bool value = false;
    };

    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned int>(limit)); }
    void key(char option);
    void number(std::string const& text);
    void number(int value) { number(std::to_string(value)); }
    void item(int value) { waiting_ += std::to_string(value) + ";"; }
    void send_reply();
    void enter(menus::Menu const& menu);
    void leave();

    void main_command();
    void dio_command();
    void set_pin_config();
    void read_pin_config();
    void set_pin_value();
    void get_pin_value();
    void read_all_pins();
    void camera_command();
    void set_offset();
    void button_command();

    std::mt19937 random_;
    menus::Menu const* menu_ = &menus::kMain;
    std::array<Pin, 6> pins_;
    std::string waiting_;  // items of a reply that is not sent yet
    std::string* lines_ = nullptr;
    std::string* replies_ = nullptr;
};

}  // namespace proof
