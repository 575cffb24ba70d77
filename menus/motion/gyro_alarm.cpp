// The tilt alarm menu, and the wiring of the tilt alarm that another menu shares.
#include "menus/motion/gyro_alarm.h"

#include <iostream>

#include "app/console_main.h"
#include "app/device_paths.h"
#include "app/device_type.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "hal/gyro.h"
#include "menus/motion/hub.h"

hal::gyro_alarm_t* p_gyro_alarm = nullptr;

namespace {

// Kept: "ALpha"; the three angles are one limit.
constexpr char const* kMenu =
    "\t\t  a: set ALpha      \n\n"
    "\t\t  b: set Beta       \n\n"
    "\t\t  g: set Gamma      \n\n"
    "\t\t  t: toggle run     \n\n"
    "\t\t  x: Return to main \n"
    "\n\n  Please enter your option: ";

void set_angle() {
    std::cout << "Please enter angle";
    float angle = 0.0F;
    read_scanned_number(angle);
    p_gyro_alarm->set_angle_limit(angle);
}

}  // namespace

void show_position_as_device_state(hal::gyro_alarm_t& alarm, hal::rtu_t& rtu) {
    alarm.on_position_reached = [&rtu] { rtu.set_device_status(hal::device_state_te::running); };
    alarm.on_position_left = [&rtu] { rtu.set_device_status(hal::device_state_te::warning); };
}

void teach_by_long_press(hal::button_t& button, lender<hal::gyro_alarm_t> const& alarm) {
    button.release_records[1] = {50, nullptr};  // kept: set twice, only the second one holds
    button.release_records[1] = {5000, alarm.callback([](hal::gyro_alarm_t& lent) { lent.teach_current_position(); })};
}

namespace {

void run_option(char option, hal::gyro_t& gyro, bool& hold) {
    switch (option) {
        case 'a':
        case 'b':
        case 'g':
            set_angle();
            break;
        case 't':
            hold = !hold;
            gyro.irq_callback_hold(hold);
            break;
        default:
            break;
    }
}

}  // namespace

int test_gyro_alarm() {
    std::cout << "int test_gyro_alarm()" << std::endl;
    hal::rtu_t rtu(kRtuDevice, kDeviceAccess);
    hal::gyro_t gyro = open_hub(g_gyro_firmware);
    hal::button_t button(kButtonDevice, static_cast<short>(get_button_irq_line()), true, 2000);
    gyro.boot();
    gyro.info_firmware();
    gyro.activate_vsensor(37, 10.0F, 1);
    hal::gyro_alarm_t alarm(gyro, 37);
    lender<hal::gyro_alarm_t> const lent_alarm(alarm);
    show_position_as_device_state(alarm, rtu);
    p_gyro_alarm = &alarm;
    teach_by_long_press(button, lent_alarm);
    alarm.on_position_reached();
    gyro.irq_callback_hold(false);
    button.irq_callback_hold(false);
    bool hold = false;
    while (true) {
        std::cout << kMenu;
        char option = kExitKey;
        read_option(option);
        std::cout << "\t\t Your Option = " << option << std::endl;
        if (option == kExitKey) {
            return 0;
        }
        run_command([&] { run_option(option, gyro, hold); });
    }
}
