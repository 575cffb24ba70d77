// The console's menus: how each is entered, answered and left, and what it calls, as the tests expect it. A new menu
// gets its row here, and with it its place in every test of all menus.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/console_session.h"
#include "tests/support/screens/imaging.h"
#include "tests/support/screens/light.h"
#include "tests/support/screens/motion.h"
#include "tests/support/screens/ranging.h"
#include "tests/support/screens/shell.h"

namespace menus {

using support::Calls;

// What is not so of every menu.
enum Trait {
    offers_zero = 1,       // key '0' ends the process
    client_driven = 2,     // in socket mode its keys come from the client, not from the terminal
    ends_the_console = 4,  // its exit key does
    needs_steps = 8,       // its time has to stand, or samples come between the keys
};

struct Menu {
    char const* name;             // in the names of tests
    char key;                     // at the main menu; '\0': none leads to it
    std::string start;            // printed once on entry
    std::string (*screen)(char);  // the menu with the echo of the key that answers it
    std::string echo;             // the beginning of that echo
    std::string goodbye;          // printed behind the echo of the exit key
    Calls opening;                // calls on entry
    Calls closing;                // calls when it is left
    Calls ending;                 // calls when the console ends, however it does
    int traits;
    char const* entry_point = "";  // where it is reached so

    bool is(Trait trait) const { return (traits & trait) != 0; }
    // Its screen, at whose end it waits for an option.
    std::string prompt() const {
        std::string const answered = screen('?');
        return answered.substr(0, answered.size() - echo.size() - 2);
    }
    // What leads to it from the console's start.
    std::string entry_keys() const { return key == '\0' ? "" : std::string(1, key); }
    // What leaves it, and then the console.
    std::string exit_keys() const { return is(ends_the_console) ? "x" : "xx"; }
};

inline void PrintTo(Menu const& menu, std::ostream* out) {
    *out << menu.name;
}

inline Calls operator+(Calls first, Calls const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline std::string const kFirmwareAp = "/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw";
inline std::string const kFirmwareAb = "/opt/kelvora/libhal/fw/kelvora-260AB_turbo-1.x.fw";

inline std::string const kRtuConstruction = "rtu_t::rtu_t(\"/dev/r47-rtu-driver\", 2)";

inline std::string base_construction(std::string const& node) {
    return "base_t::base_t(\"" + node + "\", 2)";
}

inline std::string gyro_construction(std::string const& firmware = kFirmwareAp) {
    return "gyro_t::gyro_t(\"/dev/i2c-2\", 2, \"" + firmware + "\", \"/sys/class/gpio/gpio481/value\", 200)";
}

inline std::string button_construction(int line) {
    return "button_t::button_t(\"/dev/gpiochip1\", " + std::to_string(line) + ", true, 2000)";
}

inline Menu const kMain{
    "Main", '\0', "", screens::main_menu, "Entered Option = ", "", {}, {}, {}, client_driven | ends_the_console};
inline Menu const kDio{"Dio",
                       'a',
                       screens::kDioStart,
                       screens::dio_menu,
                       "\n\tYour option = ",
                       "",
                       {kRtuConstruction},
                       {},
                       {"rtu_t::~rtu_t()"},
                       offers_zero | client_driven};
inline Menu const kRtu{"Rtu", 'b', screens::kRtuStart, screens::rtu_menu, "Your Option = ", "", {},
                       {},    {},  offers_zero};
inline Menu const kIllumination{"Illumination",
                                'c',
                                "",
                                screens::illumination_menu,
                                "Your Option = ",
                                "",
                                {base_construction("/dev/r47-illumination-driver")},
                                {"base_t::~base_t()"},
                                {},
                                offers_zero};
// Of the whole device, where both sensors' nodes are, both keys open the same one.
inline Menu menu_of_image_sensor(char const* name, char key) {
    return {name,
            key,
            "",
            screens::image_sensor_menu,
            "\t\t Your Option = ",
            "",
            {base_construction("/dev/imx296")},
            {"base_t::~base_t()"},
            {},
            offers_zero};
}
inline Menu const kImx296 = menu_of_image_sensor("Imx296", 'e');
inline Menu const kImx567 = menu_of_image_sensor("Imx567", 'E');
inline Menu const kAutofocus{"Autofocus",
                             'f',
                             "",
                             screens::autofocus_menu,
                             "Your Option = ",
                             "",
                             {base_construction("/dev/r47-autofocus-driver"), "autofocus_t::set_present() = true"},
                             {"base_t::~base_t()"},
                             {},
                             offers_zero};
inline Menu const kCamera{
    "Camera",
    'k',
    "",
    screens::camera_menu,
    "\t\tYour option = ",
    "",
    {"camera_t::determine_imxtype() = 1", R"(camera_t::camera_t(1, null, "/dev/r47-rtu-driver", 2))"},
    {"camera_t::~camera_t()"},
    {},
    client_driven};
inline Menu const kSystem{"System",
                          'l',
                          screens::kSystemStart,
                          screens::system_menu,
                          "\n\tYour option = ",
                          "",
                          {R"(system_t::system_t("/dev/r47-rtu-driver", 2))"},
                          {},
                          {},
                          ends_the_console};
inline Menu const kGyro{
    "Gyro",
    'g',
    screens::firmware_report("AP", true) + "\n\n\n\n\n",
    screens::gyro_menu,
    "Your Option = ",
    "",
    {gyro_construction(), "gyro_t::boot() = 0", "gyro_t::install_callbacks() = 0", "gyro_t::info_firmware() = 0",
     "gyro_t::activate_vsensor(37, 5, 1) = 0", "gyro_t::irq_callback_hold(false) = 0"},
    {"gyro_t::~gyro_t()"},
    {},
    offers_zero | needs_steps};
inline Menu const kAlarm{
    "GyroAlarm",
    'G',
    "int test_gyro_alarm()\nDetected device R47" + screens::firmware_report("AP", true),
    screens::alarm_menu,
    "\t\t Your Option = ",
    "",
    {kRtuConstruction, gyro_construction(), button_construction(82), "gyro_t::boot() = 0",
     "gyro_t::info_firmware() = 0", "gyro_t::activate_vsensor(37, 10, 1) = 0", "gyro_alarm_t::gyro_alarm_t(#3, 37)",
     "rtu_t::set_device_status(3) = 0", "gyro_t::irq_callback_hold(false) = 0",
     "button_t::irq_callback_hold(false) = 0"},
    {"gyro_alarm_t::~gyro_alarm_t()", "button_t::~button_t()", "gyro_t::~gyro_t()", "rtu_t::~rtu_t()"},
    {},
    needs_steps};
inline Menu const kDelegate{"GyroDelegate",
                            'h',
                            "",
                            screens::delegate_menu,
                            "\t\t Your Option = ",
                            "",
                            {gyro_construction(), "gyro_t::boot() = 0", "gyro_t::activate_vsensor(37, 5, 1) = 0",
                             "gyro_delegate_t::gyro_delegate_t(#2, 37, function)"},
                            {"gyro_delegate_t::~gyro_delegate_t()", "gyro_t::~gyro_t()"},
                            {},
                            needs_steps};
inline Menu const kDelegateAndAlarm{
    "DelegateAndAlarm",
    'H',
    "int test_gyro_delegate_and_alarm()\nDetected device R47" + screens::firmware_report("AP", true),
    screens::delegate_menu,
    "\t\t Your Option = ",
    "",
    {kRtuConstruction, gyro_construction(), button_construction(82), "gyro_t::boot() = 0",
     "gyro_t::info_firmware() = 0", "gyro_t::activate_vsensor(37, 1, 1) = 0", "gyro_alarm_t::gyro_alarm_t(#3, 37)",
     "gyro_delegate_t::gyro_delegate_t(#3, 37, function)", "rtu_t::set_device_status(3) = 0",
     "gyro_t::irq_callback_hold(false) = 0", "button_t::irq_callback_hold(false) = 0"},
    {"gyro_delegate_t::~gyro_delegate_t()", "gyro_alarm_t::~gyro_alarm_t()", "button_t::~button_t()",
     "gyro_t::~gyro_t()", "rtu_t::~rtu_t()"},
    {},
    needs_steps};
inline Menu const kButton{"Button",
                          't',
                          "Detected device R47",
                          screens::button_menu,
                          "\t\tYour option = ",
                          "",
                          {button_construction(82), kRtuConstruction, "button_t::irq_callback_hold(false) = 0"},
                          {"rtu_t::~rtu_t()", "button_t::~button_t()"},
                          {},
                          client_driven | needs_steps};
inline Menu const kTof{"Tof",
                       'p',
                       "",
                       screens::tof_menu,
                       "\t\tYour option = ",
                       screens::unknown_command('x'),
                       {R"(tof_t::tof_t("/dev/r47-tof-driver", 2))"},
                       {"tof_t::~tof_t()"},
                       {},
                       0};
// No key leads to it, so it is none of every_menu().
inline Menu const kLegacyAlarm{
    "LegacyAlarm",
    '\0',
    "int test_alarm_old()\n" + screens::firmware_report("AP", true),
    screens::legacy_alarm_menu,
    "\t\t Your Option = ",
    "",
    {kRtuConstruction, gyro_construction(), "gyro_alarm_t::gyro_alarm_t(#3, 37)", "gyro_t::boot() = 0",
     "gyro_t::install_callbacks() = 0", "gyro_t::irq_callback_hold(true) = 0", "gyro_t::info_firmware() = 0",
     "gyro_t::activate_vsensor(37, 1, 1) = 0", button_construction(44), "button_t::irq_callback_hold(false) = 0",
     "rtu_t::set_device_status(3) = 0", "gyro_t::irq_callback_hold(false) = 0", "gyro_t::irq_callback_hold(false) = 0"},
    {"button_t::~button_t()", "gyro_alarm_t::~gyro_alarm_t()", "gyro_t::~gyro_t()", "rtu_t::~rtu_t()"},
    {},
    ends_the_console | needs_steps,
    "alarm_old"};

inline std::vector<Menu> every_menu() {
    return {kMain,   kDio,  kRtu,   kIllumination, kImx296,           kImx567, kAutofocus, kCamera,
            kSystem, kGyro, kAlarm, kDelegate,     kDelegateAndAlarm, kButton, kTof};
}

// Those of every_menu() that have the trait.
inline std::vector<Menu> menus_that(Trait trait) {
    std::vector<Menu> some;
    for (Menu const& menu : every_menu()) {
        if (menu.is(trait)) {
            some.push_back(menu);
        }
    }
    return some;
}

// With the clock that the menu needs where no other is chosen, and then the sensor hub measures without noise.
inline support::SessionOptions options_for(Menu const& menu, support::SessionOptions options = {}) {
    if (menu.is(needs_steps) && options.clock == "real") {
        options.clock = "stepped";
        options.scenario.emplace_back("set orientation.noise 0");
        options.scenario.emplace_back("set orientation.drift 0");
    }
    if (options.entry_point.empty()) {
        options.entry_point = menu.entry_point;
    }
    return options;
}

// The output of a run from its start up to the menu's first screen.
inline std::string output_before(Menu const& menu) {
    std::string const keyed = menu.key == '\0' ? "" : screens::main_menu(menu.key);
    return (*menu.entry_point == '\0' ? screens::kStart + keyed : "") + menu.start;
}

// What a run prints that visits the menu, where the keys before the exit key print `of_keys`, and then leaves the
// console.
inline std::string output_of_visit(Menu const& menu, std::string const& of_keys) {
    return output_before(menu) + of_keys + menu.screen('x') + menu.goodbye +
           (menu.is(ends_the_console) ? "" : screens::main_menu('x'));
}

// As output_before and Menu::screen, in socket mode.
inline std::string output_before_with_client(Menu const& menu) {
    return screens::kSocketModeStart + screens::main_menu_of_client(menu.key) + menu.start;
}
inline std::string screen_with_client(Menu const& menu, char key) {
    return menu.prompt() + (menu.is(client_driven) ? screens::line_from_client(std::string{key}) : "") + menu.echo +
           key + "\n";
}

inline Calls calls_of_visit(Menu const& menu, Calls const& of_keys) {
    return menu.opening + of_keys + menu.closing + menu.ending;
}

}  // namespace menus
