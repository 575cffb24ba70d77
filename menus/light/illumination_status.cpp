// The illumination menu's commands that read or write the module's status records.
#include "menus/light/illumination_status.h"

#include <iostream>

#include "app/terminal_input.h"
#include "menus/light/dialogue.h"
#include "menus/light/illumination_object.h"

using namespace illumination_menu;

namespace {

constexpr unsigned int kFlashMode = 0x10;
constexpr unsigned int kContinuousMode = 0x30;

constexpr unsigned int kNominalRange = 0x40;
constexpr unsigned int kDoubleRange = 0x80;
constexpr unsigned int kTripleRange = 0xC0;

// Modes and ranges that have no text print nothing.
char const* mode_text(unsigned int mode) {
    switch (mode) {
        case kFlashMode:
            return "FLASH MODE \n";
        case kContinuousMode:
            return "CONTINUOUS MODE \n";
        default:
            return "";
    }
}

char const* range_text(unsigned int range) {
    switch (range) {
        case kNominalRange:
            return "NOMINAL RANGE \n";
        case kDoubleRange:
            return "DOUBLE RANGE \n";
        case kTripleRange:
            return "TRIPLE RANGE \n";
        default:
            return "";
    }
}

char const* exposure_text(hal::exposure_mode mode) {
    switch (mode) {
        case hal::exposure_mode::flash:
            return "exposure FLASH \n";
        case hal::exposure_mode::switched:
            return "exposure SWITCH \n";
        case hal::exposure_mode::continuous:
            return "exposure CONTINUOUS \n";
        default:
            return "";
    }
}

}  // namespace

void get_spot_type() {
    bool rgbw = false;
    print_failure(p_illumination->is_rgbw_illumination(rgbw));
    std::cout << (rgbw ? "IS RGBW" : "IS NOT RGBW") << std::endl;
}

void get_spot_states() {
    hal::spot_states states{};
    print_failure(p_illumination->get_spot_states(states));
    std::cout << mode_text(states.operating_mode) << range_text(states.light_range);
    for (int i = 0; i < 4; ++i) {
        std::cout << "SEGMENT " << i << " IS " << (states.segments[i] != 0 ? "ON" : "OFF") << std::endl;
    }
}

void get_spot_flags() {
    hal::spot_flags flags{};
    print_failure(p_illumination->get_spot_flags(flags));
    // Kept: the order is not that of the record.
    print_flag("ERROR: ", flags.general_error);
    print_flag("CALIBRATION ERROR: ", flags.calibration_error);
    print_flag("DRIVER ERROR: ", flags.driver_error);
    print_flag("DVSC: ", flags.dvsc);
    print_flag("LOW POWER: ", flags.low_power);
    print_flag("BC: ", flags.bc);
    print_flag("OT: ", flags.over_temperature);
    print_flag("TRG OVF: ", flags.trigger_overflow);
}

void get_error_code() {
    hal::illu_error_code code{};
    print_failure(p_illumination->get_error_code(code));
    std::cout << "ERROR CODE: " << static_cast<unsigned int>(code) << std::endl;
}

void get_exposure_mode() {
    hal::exposure_mode mode{};
    print_failure(p_illumination->get_exposure_mode(mode));
    std::cout << exposure_text(mode);
}

void set_exposure_mode() {
    // "CONTINOUS" is kept.
    int const choice = ask_below<int>("set exposure mode: 0: CONTINOUS, 1: SWITCH, 2: FLASH");
    auto mode = hal::exposure_mode::continuous;
    int time = 0;
    if (choice == 1) {
        mode = hal::exposure_mode::switched;
    } else if (choice == 2) {
        std::cout << "Exposure time is needed for FLASH mode, enter a value: \n";
        read_number(time);
        mode = hal::exposure_mode::flash;
    }
    print_failure(p_illumination->set_exposure_mode(mode, static_cast<unsigned int>(time)));
}

void get_internal_temp() {
    show_number("internal temp: ", &hal::illumination_t::get_internal_temperature);
}

void get_external_temp() {
    show_number("external temp: ", &hal::illumination_t::get_external_temperature);
}

void get_guards() {
    hal::illu_guards guards{};
    print_failure(p_illumination->get_guards(guards));
    print_flag("OT: ", guards.over_temperature);
    print_flag("DVS: ", guards.dvs);
    print_flag("AUTOCAL: ", guards.autocal);
    print_flag("PVD: ", guards.pvd);
}

void set_guards() {
    hal::illu_guards guards{};
    guards.over_temperature = ask_below<int>("set guards: OT: 0 FALSE, 1 TRUE") != 0;
    guards.dvs = ask_below<int>("set guards: DVS: 0 FALSE, 1 TRUE") != 0;
    guards.autocal = ask_below<int>("set guards: AUTOCAL: 0 FALSE, 1 TRUE") != 0;
    guards.pvd = ask_below<int>("set guards: PVD: 0 FALSE, 1 TRUE") != 0;
    print_failure(p_illumination->set_guards(guards));
}
