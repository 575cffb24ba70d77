// The system state menu: the state that the device shows to its user, and its heartbeat.
#include "app/system_state.h"

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "app/device_paths.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"

namespace {

constexpr auto kWaitBeforeAction = std::chrono::milliseconds(700);

// "PRVIEW" is kept.
constexpr char const* kMenu =
    "\t\t f. Set Device State BOOT = 1,  CONFIRM = 2, RUNNING = 3, FIND_ME= 4, WARNING = 5, ERROR = 6,\n"
    " \t\t PREVIEW_NETWORK_RESET = 9, PRVIEW_LOCALIZE = 10 \n"
    "\t\t F. Get Device State BOOT = 1,  CONFIRM, RUNNING, FIND_ME, WARNING, ERROR        \n"
    "\t\t h. Trigger Heartbeat\n"
    "\t\t x. Return to Main\n\n"
    "\n\n Enter your option = ";

// Any number goes to the library, which knows its states.
void set_device_status(hal::system_t& system) {
    std::cout << "Enter device state: ";
    unsigned int state = 0;
    read_number(state);
    system.set_device_status(static_cast<hal::device_state_te>(state));
}

}  // namespace

int get_device_status(hal::system_t& system) {
    hal::device_state_te state{};
    system.get_device_status(state);
    std::cout << "Read Device state" << static_cast<int>(state) << std::endl;
    return 0;
}

namespace {

void run_option(char option, hal::system_t& system) {
    switch (option) {
        case 'h':
            system.trigger_heartbeat();
            break;
        case 'F':
            get_device_status(system);
            break;
        case 'f':
            set_device_status(system);
            break;
        default:
            std::cout << "Enter Valid option = " << option;
    }
}

}  // namespace

void test_system() {
    hal::system_t system(kRtuDevice, kDeviceAccess);
    std::cout << "\n\n\n\n\nStarted test program for the_system component\n";
    while (true) {
        std::cout << kMenu;
        char option = kExitKey;
        read_option(option);
        std::cout << "\n\tYour option = " << option << std::endl;
        std::this_thread::sleep_for(kWaitBeforeAction);
        if (option == kExitKey) {
            std::exit(0);  // kept: the label says "Return to Main", the key ends the process
        }
        run_command([&] { run_option(option, system); });
    }
}
