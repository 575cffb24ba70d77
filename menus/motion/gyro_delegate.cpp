// The menus that show the orientation live: with the delegate alone, and together with the tilt alarm.
#include "menus/motion/gyro_delegate.h"

#include <iostream>

#include "app/console_main.h"
#include "app/device_paths.h"
#include "app/device_type.h"
#include "app/terminal_input.h"
#include "hal/button.h"
#include "hal/gyro.h"
#include "hal/gyro_alarm.h"
#include "hal/gyro_delegate.h"
#include "hal/rtu.h"
#include "menus/motion/gyro_alarm.h"
#include "menus/motion/hub.h"
#include "menus/motion/orientation_sample.h"

namespace {

constexpr char const* kMenu =
    "\t\t  t: toggle run      \n\n"
    "\t\t  x: Return to main     \n"
    "\n\n   Please enter your option: ";

// Shows the menu of both and reads its option.
char ask_option() {
    std::cout << kMenu;
    char option = kExitKey;
    read_option(option);
    std::cout << "\t\t Your Option = " << option << std::endl;
    return option;
}

}  // namespace

void print_orientation(unsigned char sensor_id, hal::cb_struct_te kind, void* data) {
    if (auto const angles = read_orientation(sensor_id, kind, data)) {
        auto const [yaw, pitch, roll] = *angles;
        std::cout << "  Alpha: " << yaw << "  Beta : " << pitch << "  Gamma: " << roll << std::endl;
    }
}

int test_gyro_delegate() {
    hal::gyro_t gyro = open_hub(kHubFirmware);  // kept: this one, whichever is configured
    gyro.boot();
    gyro.activate_vsensor(37, 5.0F, 1);
    hal::gyro_delegate_t const delegate(gyro, 37, print_orientation);
    bool hold = false;
    for (char option = ask_option(); option != 'x'; option = ask_option()) {
        if (option == 't') {
            gyro.irq_callback_hold(!hold);
            if (hold) {
                std::cout << "Running";  // kept without a line end, and only in this menu
            }
            hold = !hold;
        }
    }
    return 0;
}

int test_gyro_delegate_and_alarm() {
    std::cout << "int test_gyro_delegate_and_alarm()" << std::endl;
    hal::rtu_t rtu(kRtuDevice, kDeviceAccess);
    hal::gyro_t gyro = open_hub(g_gyro_firmware);
    hal::button_t button(kButtonDevice, get_button_irq_line(), true, 2000);
    gyro.boot();
    gyro.info_firmware();
    gyro.activate_vsensor(37, 1.0F, 1);
    hal::gyro_alarm_t alarm(gyro, 37);
    lender<hal::gyro_alarm_t> const lent_alarm(alarm);
    hal::gyro_delegate_t const delegate(gyro, 37, print_orientation);
    show_position_as_device_state(alarm, rtu);
    teach_by_long_press(button, lent_alarm);
    alarm.on_position_reached();
    gyro.irq_callback_hold(false);
    button.irq_callback_hold(false);
    bool hold = false;
    for (char option = ask_option(); option != 'x'; option = ask_option()) {
        if (option == 't') {
            hold = !hold;
            gyro.irq_callback_hold(hold);
        }
    }
    return 0;
}
