// The legacy tilt alarm test, in which the console's own watchdog judges the samples.
#include "menus/motion/alarm_old.h"

#include <chrono>
#include <iostream>
#include <thread>

#include "app/device_paths.h"
#include "app/terminal_input.h"
#include "hal/button.h"
#include "hal/gyro.h"
#include "hal/gyro_alarm.h"
#include "hal/rtu.h"
#include "menus/motion/hub.h"
#include "menus/motion/tilt_watchdog.h"

namespace {

constexpr auto kWaitForHub = std::chrono::seconds(3);

constexpr char const* kMenu =
    "\t\t  i: vsensor list    \n"
    "\t\t  s: save position    \n"
    "\t\t  t: toggle run      \n\n"
    "\t\t  x: Return to main     \n"
    "\n\n   Please enter your option: ";

}  // namespace

int test_alarm_old() {
    std::cout << "int test_alarm_old()" << std::endl;
    hal::rtu_t rtu(kRtuDevice, kDeviceAccess);
    // Kept: always this firmware and this button line, whatever is configured and fitted.
    hal::gyro_t gyro = open_hub(kHubFirmware);
    hal::gyro_alarm_t const alarm(gyro, 37);  // kept: built, but its actions are never set
    gyro.boot();
    gyro.install_callbacks();
    gyro.irq_callback_hold(true);
    gyro.info_firmware();
    gyro.activate_vsensor(37, 1.0F, 1);
    hal::button_t button(kButtonDevice, 44, true, 2000);
    button.release_records[0] = {50, nullptr};
    button.release_records[1] = {5000, request_save_position};
    button.irq_callback_hold(false);
    g_on_running = [&rtu] { rtu.set_device_status(hal::device_state_te::running); };
    g_on_warning = [&rtu] { rtu.set_device_status(hal::device_state_te::warning); };
    g_on_running();
    gyro.callback_records[0] = {37, cb_sensor_data};
    gyro.callback_records[1] = {38, cb_sensor_data};
    gyro.irq_callback_hold(false);
    std::this_thread::sleep_for(kWaitForHub);
    gyro.irq_callback_hold(false);
    bool hold = false;
    while (true) {
        std::cout << kMenu;
        char option = kExitKey;
        read_option(option);
        std::cout << "\t\t Your Option = " << option << std::endl;
        switch (option) {
            case 's':
                request_save_position();
                break;
            case 't':
                gyro.irq_callback_hold(!hold);
                if (hold) {
                    std::cout << "Running";
                }
                hold = !hold;
                break;
            case 'i':
                gyro.info_vsensor_list();
                break;
            case 'x':
                return 0;
            default:
                break;
        }
    }
}
