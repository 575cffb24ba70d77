// The ranging menu: settings, calibration and single shots of the time-of-flight sensor.
#include "menus/ranging/tof.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <iterator>

#include "app/device_paths.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "hal/tof.h"

namespace {

constexpr char const* kMenu =
    "\t\t\n\n\n\n\nTOF Control\n\n"
    "\t\tCommands:\n"
    "\t\t  a: Set resolution 16 - 4x4, 64 - 8x8         \n"
    "\t\t  b: Set frequency (4x4 1-60 hz) (8x8 1-15 hz) \n"
    "\t\t  c: Set Ranging Mode\t(1 - CONTINUOUS, 3 - AUTONOMOUS)\n"
    "\t\t  d: Set Integration Time\n"
    "\t\t  e: Set Calibration Parameters\n"
    "\t\t  f: XTalk Calibration\n"
    "\t\t  g: Number of measurements\n"
    "\t\t  h: Shot\n"
    "\t\t  i: Illumination module test\n"
    "\t\t  j: Power mode (0 sleep; 1 wakeup)\n"
    "\t\t  x: Exit\n"
    "Please enter your option: ";

hal::tof_t* p_tof = nullptr;  // the sensor of the menu that runs

// The number that is typed behind the prompt; 0 where the text is none.
int ask_behind(char const* prompt) {
    std::cout << prompt;
    int value = 0;
    read_number(value);
    return value;
}

// Codes of one byte are shown as numbers too.
template <typename Value>
void print_value(char const* age, char const* name, Value value) {
    std::cout << age << " " << name << " : " << static_cast<unsigned int>(value) << std::endl;
}

// Statuses are ignored: a refused value shows in the read-back, which is then the old one.
template <typename Value>
void change_setting(char const* prompt, char const* name, int (hal::tof_t::*get)(Value&),
                    int (hal::tof_t::*set)(Value)) {
    int const entered = ask_behind(prompt);
    Value value{};
    (p_tof->*get)(value);
    print_value("Old", name, value);
    (p_tof->*set)(static_cast<Value>(entered));  // narrowed unchecked: 300 Hz is 44
    (p_tof->*get)(value);
    print_value("New", name, value);
}

// The setter updates the field.
template <typename Value>
void change_calibration(char const* prompt, char const* name, Value const& field, int (hal::tof_t::*set)(Value)) {
    int const entered = ask_behind(prompt);
    print_value("Old", name, field);
    (p_tof->*set)(static_cast<Value>(entered));  // narrowed unchecked, as the settings
    print_value("New", name, field);
}

void set_calibration_parameters() {
    change_calibration("Enter Reflectance percent: ", "Reflectance percent", p_tof->calibration_reflectance_percent,
                       &hal::tof_t::set_calibration_reflectance_percent);
    change_calibration("Enter Number Of Samples: ", "Number Of Samples", p_tof->calibration_nb_samples,
                       &hal::tof_t::set_calibration_nb_samples);
    change_calibration("Enter Object Distance: ", "Object Distance", p_tof->calibration_distance,
                       &hal::tof_t::set_calibration_distance);
}

// Takes one shot and prints its distances as a square; a failure prints nothing.
void shot() {
    VL53L5CX_ResultsData results{};
    hal::tof_t::Resolution resolution{};
    if (p_tof->shot(results) != 0 || p_tof->get_resolution(resolution) != 0) {
        return;
    }
    int const zones = std::min(static_cast<int>(resolution), static_cast<int>(std::size(results.distance_mm)));
    int const side = static_cast<int>(std::sqrt(zones));
    for (int i = 0; i < zones; ++i) {
        std::printf("%4d\t", results.distance_mm[i]);
        if (i != 0 && (i + 1) % side == 0) {
            std::printf("\n");
        }
    }
    std::printf("\n\n");
}

void run_option(char option) {
    switch (option) {
        case 'a':
            change_setting("Enter resolution: ", "resolution", &hal::tof_t::get_resolution,
                           &hal::tof_t::set_resolution);
            break;
        case 'b':
            change_setting("Enter value: ", "frequency", &hal::tof_t::get_frequency, &hal::tof_t::set_frequency);
            break;
        case 'c':
            // "Ranginig" is kept.
            change_setting("Enter value: ", "Ranginig Mode", &hal::tof_t::get_ranging_mode,
                           &hal::tof_t::set_ranging_mode);
            break;
        case 'd':
            change_setting("Enter value: ", "Integration Time", &hal::tof_t::get_integration_time,
                           &hal::tof_t::set_integration_time);
            break;
        case 'e':
            set_calibration_parameters();
            break;
        case 'f':
            p_tof->xtalk_calibration();
            break;
        case 'g':
            p_tof->number_of_measurements = static_cast<unsigned int>(ask_behind("Enter number of measurements: "));
            break;
        case 'h':
            shot();
            break;
        case 'i':
            p_tof->illumination_module_test();
            break;
        case 'j':
            change_setting("Enter value: ", "Power Mode", &hal::tof_t::get_power_mode, &hal::tof_t::set_power_mode);
            break;
        default:
            std::cout << "unknown command " << option << std::endl;
    }
}

}  // namespace

int test_tof() {
    hal::tof_t tof(kTofDevice, kDeviceAccess);
    p_tof = &tof;
    while (true) {
        std::cout << kMenu;
        char option = kExitKey;
        read_option(option);
        std::cout << "\t\tYour option = " << option << std::endl;
        run_command([&] { run_option(option); });  // kept: the exit key, too, is announced as unknown
        if (option == kExitKey) {
            return 0;
        }
    }
}
