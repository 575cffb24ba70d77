// The real-time unit menu: triggers, exposure timing and the digital I/O's power.
#include "menus/imaging/rtu.h"

#include <iostream>

#include "app/console_io.h"
#include "app/device_paths.h"
#include "app/module_information.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "app/value_prompts.h"
#include "hal/rtu.h"
#include "hal/rtu_delegate.h"

namespace {

// Opened before main, so that the unit is open before anything else is done.
hal::rtu_t rtu(kRtuDevice, kDeviceAccess);

// "ix567" is kept, here and in the prompt.
constexpr char const* kMenu =
    "\t\t Rtu Low Level Control v0.1\n\n"
    "\t\t Commands:\n"
    "\t\t a: set imager  0 - none, 1- imx296, 2- ix567 \n"
    "\t\t A: get imager  0 - none, 1- imx296, 2- ix567 \n"
    "\t\t b: set trigger prohibited time    [µs] \n"
    "\t\t B: get trigger prohibited time    [µs] \n"
    "\t\t c: set exposure offset            [µs] \n"
    "\t\t C: get exposure offset            [µs] \n"
    "\t\t e: set exposure            [µs] \n"
    "\t\t E: get exposure <value>         \n"
    "\t\t m: set manual trigger           \n"
    "\t\t t: start continuous trigger     \n"
    "\t\t T: stop continuous trigger      \n"
    "\t\t p: DIO available \n"
    "\t\t x: Return to main               \n"
    "\n\nPlease enter your option: ";

constexpr char const* kProhibitedTime = "trigger_prohibited_time";
constexpr char const* kExposureOffset = "exposure_offset";
constexpr char const* kExposure = "exposure";

// Any number goes to the library, which knows its imagers.
void set_imager_type(int& value) {
    std::cout << "Enter a value for imager type: 1- imx296, 2- ix567 " << std::endl;
    koscanf("%d", value);
    rtu.set_imager_type(static_cast<hal::imx_te>(value));
}

void get_imager_type(hal::imx_te& type) {
    rtu.get_imager_type(type);
    std::cout << "imager type: " << static_cast<int>(type) << std::endl;
}

void start_continuous_trigger(int& value) {
    std::cout << "Enter a value for fps: ";
    koscanf("%d", value);
    rtu.set_trigger_mode(true);  // kept: before the rate, so a refused rate leaves the trigger continuous
    auto const fps = static_cast<unsigned int>(value);
    int const status = rtu.set_aquisition_fps(fps);
    if (status != 0) {
        std::cout << "sensor error to set fps" << std::endl;
    } else {
        std::cout << "sensor set  fps: " << fps << std::endl;
    }
    kosstream("%d", status);  // kept: waits for the reply that another command sends; stations count its items
}

}  // namespace

void dio_available() {
    bool available = false;
    if (rtu.dio_available(available) == -1) {
        return;
    }
    if (available) {
        std::cout << "24V power source detected, DIO available \n";
    } else {
        std::cout << "POE detected, DIO NOT available \n";
    }
}

int get_version_rtu(hal::revision_t& rev) {
    return rtu.get_revision(rev);
}

int test_rtu_delegate() {
    hal::rtu_delegate_t delegate(kRtuDevice, kDeviceAccess);
    unsigned char status = 0;
    delegate.get_status(status);
    hal::revision_t revision{};
    delegate.get_revision(revision);
    unsigned int timeout_ms = 0;
    delegate.get_heartbeat_timeout(timeout_ms);
    return 0;
}

namespace {

void run_option(char option, int& value, hal::imx_te& imager) {
    switch (option) {
        case 'a':
            set_imager_type(value);
            break;
        case 'A':
            get_imager_type(imager);
            break;
        case 'b':
            sensor_set([](unsigned int& time_us) { return rtu.set_trigger_prohibited_time(time_us); }, kProhibitedTime);
            break;
        case 'B':
            sensor_get([](unsigned int& time_us) { return rtu.get_trigger_prohibited_time(time_us); }, kProhibitedTime);
            break;
        case 'c':
            sensor_set([](unsigned int& offset_us) { return rtu.set_exposure_offset(offset_us); }, kExposureOffset);
            break;
        case 'C':
            sensor_get([](unsigned int& offset_us) { return rtu.get_exposure_offset(offset_us); }, kExposureOffset);
            break;
        case 'e':
            sensor_set([](unsigned int& exposure_us) { return rtu.set_exposure(exposure_us); }, kExposure);
            break;
        case 'E':
            sensor_get([](unsigned int& exposure_us) { return rtu.get_exposure(exposure_us); }, kExposure);
            break;
        case 'm':
            rtu.single_shot(true);
            break;
        case 't':
            start_continuous_trigger(value);
            break;
        case 'T':
            rtu.set_trigger_mode(false);
            break;
        case 'p':
            dio_available();
            break;
        default:
            run_module_option(option, &rtu);
            break;
    }
}

}  // namespace

int test_rtu() {
    int value = 0;  // the last number typed: an entry that does not convert repeats it
    hal::imx_te imager = hal::imx_te::none;
    std::cout << "\n\n\n\n\nStarted Rtu Low Level Control \n";
    while (true) {
        top_usage();
        std::cout << kMenu;
        char option = kExitKey;
        read_option(option);  // kept: from the terminal in socket mode too, unlike the numbers of 'a' and 't'
        std::cout << "Your Option = " << option << std::endl;
        if (option == kExitKey) {
            return 0;
        }
        run_command([&] { run_option(option, value, imager); });
    }
}
