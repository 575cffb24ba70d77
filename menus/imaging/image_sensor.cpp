// The image sensor menu: the sensor that is fitted, without the camera pipeline.
#include "menus/imaging/image_sensor.h"

#include <fstream>
#include <iostream>
#include <memory>

#include "app/device_paths.h"
#include "app/module_information.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "app/value_prompts.h"
#include "menus/imaging/sensor_classes.h"

namespace {

hal::imx_t* p_sensor = nullptr;  // the running menu's

// "gcolorttype" is kept, and so is 'I', which is listed and does nothing.
constexpr char const* kMenu =
    "\t\t Commands:\n"
    "\t\t  c: gcolorttype        Get mono/color version\n"
    "\t\t  e: ggain              Get gain in dB/10 dB from the sensor device\n"
    "\t\t  E: sgain <value>      Set gain <val> in dB/10 to the sensor device\n"
    "\t\t  h: ghscanmode         \n"
    "\t\t  H: shscanmode <value> \n"
    "\t\t  i: gframecnt          \n"
    "\t\t  I: gframedlt          delay delta [µs] from the sensor device\n"
    "\t\t  j: sxy_offset <x,y>   \n"
    "\t\t  J: gxy_offset         \n"
    "\n"
    "\t\t  x: Return to main     \n"
    "\n\nPlease enter your option: ";

constexpr char const* kGain = "gain";
constexpr char const* kScanMode = "hscanmode";

constexpr unsigned int kOffset = 20;  // pixels, both ways

// The sensor whose node can be opened; null where there is none.
std::unique_ptr<hal::imx_t> open_fitted_sensor() {
    std::ifstream const imx296(kImx296Device);
    std::ifstream const imx567(kImx567Device);
    if (imx296.is_open()) {
        return std::make_unique<hal::imx296_t>();
    }
    if (imx567.is_open()) {
        return std::make_unique<hal::imx567_t>();
    }
    return nullptr;
}

void get_framecount(hal::imx_t& sensor) {
    unsigned long count = 0;
    sensor.get_framecount(count);
    std::cout << "sensor actual " << count << std::endl;
}

// Kept: the offsets are fixed, nothing is asked.
void set_roi_offset(hal::imx_t& sensor) {
    if (sensor.set_roi_xyoffset(kOffset, kOffset) == 0) {
        std::cout << "set roi offset to: " << kOffset << ", " << kOffset << std::endl;
    } else {
        std::cout << "sensor error to set roi x,y offset\n";
    }
}

void get_roi_offset(hal::imx_t& sensor) {
    unsigned int x = 0;
    unsigned int y = 0;
    if (sensor.get_roi_xyoffset(x, y) == 0) {
        std::cout << "\t\tget roi offset to: " << x << ", " << y << std::endl;
    } else {
        std::cout << "\t\tsensor error to set roi x,y offset\n";  // kept: "set", though it is the get that failed
    }
}

void run_option(char option) {
    switch (option) {
        case 'c':
            sensor_get([](unsigned int& type) { return p_sensor->get_sensortype(type); }, "sensortype");
            break;
        case 'e':
            sensor_get([](unsigned int& gain) { return p_sensor->get_gain(gain); }, kGain);
            break;
        case 'E':
            sensor_set([](unsigned int& gain) { return p_sensor->set_gain(gain); }, kGain);
            break;
        case 'h':
            sensor_get([](unsigned int& mode) { return p_sensor->get_hscanmode(mode); }, kScanMode);
            break;
        case 'H':
            sensor_set([](unsigned int& mode) { return p_sensor->set_hscanmode(mode); }, kScanMode);
            break;
        case 'i':
            get_framecount(*p_sensor);
            break;
        case 'j':
            set_roi_offset(*p_sensor);
            break;
        case 'J':
            get_roi_offset(*p_sensor);
            break;
        default:
            run_module_option(option, p_sensor);
            break;
    }
}

}  // namespace

int test_imx(int) {
    std::unique_ptr<hal::imx_t> const sensor = open_fitted_sensor();
    if (!sensor) {
        return -1;
    }
    p_sensor = sensor.get();
    while (true) {
        top_usage();
        std::cout << kMenu;
        char option = kExitKey;
        read_option(option);
        std::cout << "\t\t Your Option = " << option << std::endl;
        if (option == kExitKey) {
            return 0;
        }
        run_command([&] { run_option(option); });
    }
}
