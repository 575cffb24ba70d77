// The illumination menu, and its commands that read or write one simple setting.
#include "menus/light/illumination.h"

#include <iostream>

#include "app/console_io.h"
#include "app/device_paths.h"
#include "app/module_information.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "app/value_prompts.h"
#include "menus/light/dialogue.h"
#include "menus/light/illumination_object.h"
#include "menus/light/illumination_status.h"

using namespace illumination_menu;

namespace {

// Kept: the LED keys stand at the end, behind lines that are indented further.
constexpr char const* kMenu =
    "\t\t Illumination Low Level Control v0.1\n\n"
    "\t\t Commands:\n"
    "\t\t a: get pattern        \n"
    "\t\t A: set pattern \n"
    "\t\t b: get segments        \n"
    "\t\t B: set segments \n"
    "\t\t c: get brightness        \n"
    "\t\t C: set brightness \n"
    "\t\t d: get spot type \n"
    "\t\t e: get spot states \n"
    "\t\t f: get spot flags \n"
    "\t\t g: get error code \n"
    "\t\t h: enable protected write \n"
    "\t\t i: disable protected write \n"
    "\t\t j: get EXPOSURE \n"
    "\t\t J: set EXPOSURE \n"
    "\t\t l: get DC BRIGHTNESS LIMIT \n"
    "\t\t L: set DC BRIGHTNESS LIMIT  \n"
    "\t\t m: get FLASH BRIGHTNESS LIMIT \n"
    "\t\t M: set FLASH BRIGHTNESS LIMIT  \n"
    "\t\t n: get MODE \n"
    "\t\t N: set MODE  \n"
    "\t\t o: get internal temperature  \n"
    "\t\t O: get external temperature  \n"
    "\t\t p: get OT off limit  \n"
    "\t\t P: set OT off limit  \n"
    "\t\t q: get guards  \n"
    "\t\t Q: set guards  \n"
    "\t\t r: set OT limit decrease  \n"
    "\t\t  s: set illum red brightness         \n"
    "\t\t  S: get illum red brightness         \n"
    "\t\t  t: set illum green brightness       \n"
    "\t\t  T: get illum green brightness       \n"
    "\t\t  u: set illum blue brightness        \n"
    "\t\t  U: get illum blue brightness        \n"
    "\t\t  v: check is illum available         \n"
    "\t\t k: get red LED STATE \n"
    "\t\t K: set red LED STATE  \n"
    "\t\t z: get green LED STATE \n"
    "\t\t Z: set green LED STATE  \n"
    "\t\t y: get alter LED STATE \n"
    "\t\t Y: set alter LED STATE  \n"
    "Please enter your option: ";

constexpr unsigned int kHighestSegmentMask = 15;
constexpr unsigned int kHighestBrightness = 14;

void show_led(char const* label, int (hal::illumination_t::*get)(bool&) const) {
    bool enabled = false;
    print_failure((p_illumination->*get)(enabled));
    print_flag(label, enabled);
}

void change_led(char const* prompt, int (hal::illumination_t::*set)(bool) const) {
    print_failure((p_illumination->*set)(ask_below<int>(prompt) != 0));
}

struct setting_limits {
    unsigned int min = 0;
    unsigned int max = 0;
    unsigned int step = 0;
};

struct colour_channel {
    char const* name;
    int (hal::illumination_t::*get)(unsigned int&) const;
    int (hal::illumination_t::*set)(unsigned int);
    int (hal::illumination_t::*get_limits)(unsigned int&, unsigned int&, unsigned int&) const;
};

constexpr colour_channel kRed{"red", &hal::illumination_t::get_brightness_red, &hal::illumination_t::set_brightness_red,
                              &hal::illumination_t::get_brightness_limits_red};
constexpr colour_channel kGreen{"green", &hal::illumination_t::get_brightness_green,
                                &hal::illumination_t::set_brightness_green,
                                &hal::illumination_t::get_brightness_limits_green};
constexpr colour_channel kBlue{"blue", &hal::illumination_t::get_brightness_blue,
                               &hal::illumination_t::set_brightness_blue,
                               &hal::illumination_t::get_brightness_limits_blue};

void set_illum_brightness(colour_channel const& colour) {
    setting_limits limits;
    (p_illumination->*colour.get_limits)(limits.min, limits.max, limits.step);
    std::cout << "Enter a value in range: " << limits.min << " - " << limits.max << std::endl;
    unsigned int value = 0;
    read_number(value);
    if (value <= limits.max) {  // kept: the warning comes for the values inside the range
        std::cout << "No valid inptut" << value << std::endl;
    }
    (p_illumination->*colour.set)(value);
}

void get_illum_brightness(colour_channel const& colour) {
    unsigned int value = 0;
    (p_illumination->*colour.get)(value);
    setting_limits limits;
    (p_illumination->*colour.get_limits)(limits.min, limits.max, limits.step);
    // Kept: no blank between the value and "min: ".
    std::cout << "\t\t get brightness " << colour.name << ": " << value << "min: " << limits.min
              << ", max:" << limits.max << " ,step size: " << limits.step << std::endl;
}

// A number that the client may send; the warning does not keep it from being written.
unsigned int ask_in_range(setting_limits const& limits, char const* remark, unsigned int highest) {
    std::cout << "Enter a value in range: " << limits.min << " - " << limits.max << remark << std::endl;
    int entered = 0;
    koscanf("%d", entered);
    auto const value = static_cast<unsigned int>(entered);  // a negative number is a very large one
    if (value > highest) {
        std::cout << "No valid input " << value << std::endl;
    }
    return value;
}

}  // namespace

void get_pattern() {
    hal::light_pattern_te pattern{};
    int const status = p_illumination->get_pattern(pattern);
    if (status == 0) {
        std::cout << "\t\t get pattern: " << static_cast<unsigned int>(pattern) << std::endl;
    }
    print_failure(status);
    kosstream("%d", status);
}

void set_pattern() {
    std::cout << "Enter a value for the pattern 0 - Strobe, 1 - Continuous:";
    unsigned int value = 0;
    read_number(value);
    int const status =
        p_illumination->set_pattern(value == 1 ? hal::light_pattern_te::continuous : hal::light_pattern_te::strobe);
    print_failure(status);
    kosstream("%d", status);
}

void enable_protected_write() {
    print_failure(p_illumination->set_write_protection(true));
}

void disable_protected_write() {
    print_failure(p_illumination->set_write_protection(false));
}

void get_red_led() {
    show_led("RED ENABLED: ", &hal::illumination_t::get_red_led);
}

void set_red_led() {
    change_led("set led state: \n RED: 0 - disable 1 - enable", &hal::illumination_t::set_red_led);
}

void get_green_led() {
    show_led("GREEN ENABLED: ", &hal::illumination_t::get_green_led);
}

void set_green_led() {
    change_led("set led state: \n GREEN: 0 - disable 1 - enable", &hal::illumination_t::set_green_led);
}

void get_alter_led() {
    show_led("ALTER ENABLED: ", &hal::illumination_t::get_alter_led);
}

void set_alter_led() {
    change_led("set led state: \n ALTER: 0 - disable 1 - enable", &hal::illumination_t::set_alter_led);
}

void get_dc_brightness_limit() {
    show_number("DC BRIGHTNESS LIMIT: ", &hal::illumination_t::get_dc_brightness_limit);
}

void set_dc_brightness_limit() {
    auto const limit = static_cast<unsigned int>(ask_below<int>("set_dc_brightness_limit"));
    print_failure(p_illumination->set_dc_brightness_limit(limit));
}

void get_flash_brightness_limit() {
    show_number("FLASH BRIGHTNESS LIMIT: ", &hal::illumination_t::get_flash_brightness_limit);
}

void set_flash_brightness_limit() {
    auto const limit = static_cast<unsigned int>(ask_below<int>("set_flash_brightness_limit"));
    print_failure(p_illumination->set_flash_brightness_limit(limit));
}

void get_mode() {
    hal::illumination_mode_te mode{};
    print_failure(p_illumination->get_mode(mode));
    std::cout << (mode == hal::illumination_mode_te::active ? "ACTIVE" : "INACTIVE ") << std::endl;
}

void set_mode() {
    auto const mode = static_cast<hal::illumination_mode_te>(ask_below<int>("mode 0:INACTIVE 1:ACTIVE "));
    print_failure(p_illumination->set_mode(mode));
}

void get_ot_off_limit() {
    show_number("OT LIMIT temp: ", &hal::illumination_t::get_ot_off_limit);
}

void set_ot_off_limit() {
    print_failure(p_illumination->set_ot_off_limit(ask_below<unsigned int>(" SET OT OFF LIMIT: ")));
}

void set_limit_ot_decrease() {
    print_failure(p_illumination->set_limit_ot_decrease(ask_below<unsigned int>(" SET OT DECREASE LIMIT: ")));
}

void set_illum_brightness_red() {
    set_illum_brightness(kRed);
}

void get_illum_brightness_red() {
    get_illum_brightness(kRed);
}

void set_illum_brightness_green() {
    set_illum_brightness(kGreen);
}

void get_illum_brightness_green() {
    get_illum_brightness(kGreen);
}

void set_illum_brightness_blue() {
    set_illum_brightness(kBlue);
}

void get_illum_brightness_blue() {
    get_illum_brightness(kBlue);
}

void check_illum() {
    bool present = false;  // kept: the flag is not asked, a module that answers is there
    int const status = p_illumination->is_present(present);
    std::cout << (status < 0 ? "Illumination MISSING" : "Illumination AVAILABLE") << std::endl;
}

void get_segments() {
    unsigned int segments = 0;
    p_illumination->get_segments(segments);
    setting_limits limits;
    int const status = p_illumination->get_segments_limits(limits.min, limits.max, limits.step);
    print_failure(status);
    if (status == 0) {
        std::cout << "\t\t get segments: " << segments << " ,min: " << limits.min << ", max: " << limits.max
                  << std::endl;
    }
    kosstream("%d", status);
}

void set_segments() {
    setting_limits limits;
    p_illumination->get_segments_limits(limits.min, limits.max, limits.step);
    unsigned int const segments = ask_in_range(limits, "(each bit is a segment)", kHighestSegmentMask);
    int const status = p_illumination->set_segments(segments);
    print_failure(status);
    kosstream("%d", status);
}

void get_brightness() {
    unsigned int brightness = 0;
    p_illumination->get_brightness(brightness);
    setting_limits limits;
    int const status = p_illumination->get_brightness_limits(limits.min, limits.max, limits.step);
    // Kept: other than the segments, it is printed before the failure and in spite of it.
    std::cout << "\t\t get brightness: " << brightness << " ,min: " << limits.min << ", max: " << limits.max
              << std::endl;
    print_failure(status);
    kosstream("%d", status);
}

void set_brightness() {
    setting_limits limits;
    p_illumination->get_brightness_limits(limits.min, limits.max, limits.step);
    unsigned int const brightness = ask_in_range(limits, "", kHighestBrightness);
    int const status = p_illumination->set_brightness(brightness);
    print_failure(status);
    kosstream("%d", status);
}

namespace {

void run_option(char option) {
    switch (option) {
        case 'a':
            get_pattern();
            break;
        case 'A':
            set_pattern();
            break;
        case 'b':
            sensor_get([](unsigned int& segments) { return p_illumination->get_segments(segments); }, "segments");
            break;
        case 'B':
            sensor_set([](unsigned int& segments) { return p_illumination->set_segments(segments); }, "segments");
            break;
        case 'c':
            sensor_get([](unsigned int& brightness) { return p_illumination->get_brightness(brightness); },
                       "brightness");
            break;
        case 'C':
            sensor_set([](unsigned int& brightness) { return p_illumination->set_brightness(brightness); },
                       "brightness");
            break;
        case 'd':
            get_spot_type();
            break;
        case 'e':
            get_spot_states();
            break;
        case 'f':
            get_spot_flags();
            break;
        case 'g':
            get_error_code();
            break;
        case 'h':
            enable_protected_write();
            break;
        case 'i':
            disable_protected_write();
            break;
        case 'j':
            get_exposure_mode();
            break;
        case 'J':
            set_exposure_mode();
            break;
        case 'l':
            get_dc_brightness_limit();
            break;
        case 'L':
            set_dc_brightness_limit();
            break;
        case 'm':
            get_flash_brightness_limit();
            break;
        case 'M':
            set_flash_brightness_limit();
            break;
        case 'n':
            get_mode();
            break;
        case 'N':
            set_mode();
            break;
        case 'o':
            get_internal_temp();
            break;
        case 'O':
            get_external_temp();
            break;
        case 'p':
            get_ot_off_limit();
            break;
        case 'P':
            set_ot_off_limit();
            break;
        case 'q':
            get_guards();
            break;
        case 'Q':
            set_guards();
            break;
        case 'r':
            set_limit_ot_decrease();
            break;
        case 's':
            set_illum_brightness_red();
            break;
        case 'S':
            get_illum_brightness_red();
            break;
        case 't':
            set_illum_brightness_green();
            break;
        case 'T':
            get_illum_brightness_green();
            break;
        case 'u':
            set_illum_brightness_blue();
            break;
        case 'U':
            get_illum_brightness_blue();
            break;
        case 'v':
            check_illum();
            break;
        case 'k':
            get_red_led();
            break;
        case 'K':
            set_red_led();
            break;
        case 'z':
            get_green_led();
            break;
        case 'Z':
            set_green_led();
            break;
        case 'y':
            get_alter_led();
            break;
        case 'Y':
            set_alter_led();
            break;
        default:
            run_module_option(option, p_illumination);
            break;
    }
}

}  // namespace

int test_illumination() {
    hal::illumination_t illumination(kIlluminationDevice, kDeviceAccess);
    p_illumination = &illumination;
    while (true) {
        top_usage();
        std::cout << kMenu;
        char option = kExitKey;
        read_option(option);
        std::cout << "Your Option = " << option << std::endl;
        if (option == kExitKey) {
            return 0;
        }
        run_command([&] { run_option(option); });
    }
}
