// The autofocus menu: focus position and its limits, calibration, errors, DOE and maintenance mode.
#include "menus/light/autofocus.h"

#include <iostream>
#include <string>

#include "app/device_paths.h"
#include "app/module_information.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "menus/light/dialogue.h"

hal::autofocus_t* p_autofocus = nullptr;

namespace {

constexpr char const* kMenu =
    "\n\t/************************ AUTOFOCUS TOPICS ***********************/\n"
    "\t\t  a: AF get position                              \n"
    "\t\t  A: AF set position                              \n"
    "\t\t  b: AF reset                                     \n"
    "\t\t  c: AF calibrate                                 \n"
    "\t\t  d: AF read calibration frequency                \n"
    "\t\t  e: AF error                                     \n"
    "\t\t  f: check is autofocus available                 \n"
    "\t\t  g: AF limits                                    \n"
    "\t\t  h: AF DOE mode                                  \n"
    "\t\t  i: AF DOE force active                          \n"
    "\t\t  l: AF get position limits in mm                 \n"
    "\t\t  m: AF get position in mm                        \n"
    "\t\t  M: AF set position in mm                        \n"
    "\t\t  n: AF set maintenance mode                      \n"
    "\n"
    "Please enter your option: ";

// Commands: a read that failed prints nothing, a write one line. "posisiton" and "miror_failure" are kept.

// The value is shown as it was typed, signed.
void print_refusal(int status, char const* what, int value) {
    if (status != 0) {
        std::cout << "\t\t error setting " << what << " " << value << std::endl;
    }
}

void get_position() {
    unsigned short position = 0;
    if (p_autofocus->get_position(position) == 0) {
        std::cout << "\t\t get position : " << position << std::endl;
    }
}

void set_position() {
    int const position = ask_below<int>("AF new pos: ");
    print_refusal(p_autofocus->set_position(static_cast<unsigned int>(position)), "posisiton", position);
}

void get_calibration_frequency() {
    unsigned short frequency = 0;
    if (p_autofocus->get_calibration_frequency(frequency) == 0) {
        std::cout << "\t\t get freq: " << frequency << "hz" << std::endl;
    }
}

void read_error() {
    hal::af_error error{};
    if (p_autofocus->read_error(error) != 0) {
        return;
    }
    // Kept: the order is not that of the record.
    print_flag("communication_error: ", error.communication_error);
    print_flag("initialization_error: ", error.initialization_error);
    print_flag("miror_failure: ", error.mirror_failure);
    print_flag("motor_stuck: ", error.motor_stuck);
    print_flag("no_mirror: ", error.no_mirror);
    print_flag("no_valid_frequency: ", error.no_valid_frequency);
    print_flag("target_unreachable: ", error.target_unreachable);
    print_flag("empty_calibration_table: ", error.empty_calibration_table);
}

void print_limits(unsigned short min, unsigned short max) {
    std::cout << "\t\t min pos: " << min << ", max pos: " << max << std::endl;
}

void get_position_limits() {
    unsigned short min = 0;
    unsigned short max = 0;
    if (p_autofocus->get_position_limits(min, max) == 0) {
        print_limits(min, max);
    }
}

void set_doe_mode() {
    int const mode = ask_below<int>("AF doe mode: 0 = doe is disabled, 1 = doe is enabled and off by trigger ");
    print_refusal(p_autofocus->set_doe_mode(static_cast<hal::doe_mode_te>(mode)), "set_doe_mode", mode);
}

void set_doe_force_active() {
    int const active = ask_below<int>("AF doe led: 0 = doe follows doe mode, 1 = doe is forced to active");
    print_refusal(p_autofocus->set_doe_force_active(active != 0), "set_doe_force_active", active);
}

void get_position_limits_mm() {
    std::cout << "enter device type: 1: R47XXXX1 2: R47XXXX2 3: R47XXXX3" << std::endl;
    std::string device_type;  // kept: the typed word goes through as it is, a number too
    read_word(device_type);
    unsigned short min = 0;
    unsigned short max = 0;
    if (p_autofocus->get_position_limits_mm(device_type, min, max) == 0) {
        print_limits(min, max);
    }
}

void get_position_mm() {
    unsigned short position = 0;
    if (p_autofocus->get_position_mm(position) == 0) {
        std::cout << "\t\t get position mm : " << position << std::endl;
    }
}

void set_position_mm() {
    int const position = ask_below<int>("AF new pos: ");
    print_refusal(p_autofocus->set_position_mm(static_cast<unsigned int>(position)), "position mm", position);
}

void set_maintenance_mode() {
    int const enabled = ask_below<int>("set AF maintenance mode: 0 = disabled, 1 = enabled");
    if (p_autofocus->set_maintenance_mode(enabled != 0) != 0) {
        std::cout << "\t\t error setting maintenance mode " << std::endl;  // kept: the one without its value
    }
}

}  // namespace

void check_af() {
    std::cout << (p_autofocus->is_present() ? "Autofocus AVAILABLE" : "Autofocus MISSING") << std::endl;
}

namespace {

void run_option(char option) {
    switch (option) {
        case 'a':
            get_position();
            break;
        case 'A':
            set_position();
            break;
        case 'b':
            p_autofocus->reset();
            break;
        case 'c':
            p_autofocus->calibrate();
            break;
        case 'd':
            get_calibration_frequency();
            break;
        case 'e':
            read_error();
            break;
        case 'f':
            check_af();
            break;
        case 'g':
            get_position_limits();
            break;
        case 'h':
            set_doe_mode();
            break;
        case 'i':
            set_doe_force_active();
            break;
        case 'l':
            get_position_limits_mm();
            break;
        case 'm':
            get_position_mm();
            break;
        case 'M':
            set_position_mm();
            break;
        case 'n':
            set_maintenance_mode();
            break;
        default:
            run_module_option(option, p_autofocus);
            break;
    }
}

}  // namespace

int test_autofocus() {
    hal::autofocus_t autofocus(kAutofocusDevice, kDeviceAccess);
    p_autofocus = &autofocus;
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
