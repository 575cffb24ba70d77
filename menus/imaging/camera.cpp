// The camera menu: triggers, capture and image settings of the sensor that is fitted.
#include "menus/imaging/camera.h"

#include <iostream>

#include "app/console_io.h"
#include "app/device_paths.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "app/value_prompts.h"
#include "hal/camera.h"

namespace {

hal::camera_t* p_camera = nullptr;  // the running menu's

// "singel", "aquisition" and the ">" of "Stop Acquisition>" are kept; 'z' and 'Z' work and are not listed.
constexpr char const* kMenu =
    "\t\t\n\n\n\n\nCamera Control\n\n"
    "\t\tSensors:\n"
    "\t\t  /dev/imx296        IMX296 sensor module\n"
    "\t\t  /dev/imx567        IMX567 sensor module\n"
    "\t\tCommands:\n"
    "\t/************************ TRIGGER TOPICS ***********************/\n"
    "\t\t  m: trigger singel shot              \n"
    "\t\t  t: set continuous trigger           \n"
    "\t\t  T: set manual trigger               \n"
    "\t\t  W: get current trigger mode         \n"
    "\t\t  u: set aquisition framerate         \n"
    "\t\t  U: get aquisition framerate         \n"
    "\t\t  L: get aquisition framerate limits  \n"
    "\n\t/************************ CAPTURE TOPICS ***********************/\n"
    "\t\t  v: Start Acquisition  \n"
    "\t\t  V: Stop Acquisition>  \n"
    "\t\t  e: ggain              Get gain in dB/10 dB from the sensor device   \n"
    "\t\t  E: sgain <value>      Set gain <val> in dB/10 to the sensor device  \n"
    "!!NOTE trigger single shot 3 times to get the value correct!!\n"
    "\t\t  f: gexposure          Get exposure in us from the sensor device     \n"
    "\t\t  F: sexposure <value>  Set exposure <val> in us to the sensor device \n"
    "\t\t  w: get exposure limits  Get exposure min, max, step values from the sensor device \n"
    "\t\t  i: gframecnt          Get frame counter from the sensor device      \n"
    "\n\t/************************ IMAGE SETTING TOPICS ***********************/\n"
    "\t\t  j: sroixy <x,y>       Set roi x,y offset (ex. sroixy 10,10)\n"
    "\t\t  J: groixy             Get roi x,y offset        \n"
    "\t\t  k: get imager type                              \n"
    "\t\t  s: get scan mode                                \n"
    "\t\t  S: set scan mode                                \n"
    "\n"
    "\t\t  x: Exit               Exit\n"
    "Please enter your option: ";

constexpr int kDefaultOffset = 20;  // pixels

constexpr char const* kGain = "gain";
constexpr char const* kExposure = "exposure";

void print_limits(unsigned int min, unsigned int max, unsigned int step) {
    std::cout << "  min:" << min << std::endl;
    std::cout << "  max:" << max << std::endl;
    std::cout << "  step:" << step << std::endl;
}

void get_trigger_mode(hal::camera_t& camera) {
    hal::trigger_te mode = hal::trigger_te::manual;
    if (camera.get_trigger_mode(mode) != 0) {
        std::cout << "sensor error to get current trigger" << std::endl;
        return;
    }
    std::cout << "sensor get current trigger: " << (mode == hal::trigger_te::continuous ? "CONTINUOUS" : "MANUAL")
              << std::endl;
}

void set_framerate(hal::camera_t& camera, int& value) {
    std::cout << "Enter a value for fps: ";
    koscanf("%d", value);
    auto const fps = static_cast<unsigned int>(value);
    if (camera.set_aquisition_framerate(fps) == 0) {
        std::cout << "sensor set  fps: " << fps << std::endl;
    } else {
        std::cout << "sensor error to set fps" << std::endl;
    }
}

void get_framerate(hal::camera_t& camera) {
    unsigned int fps = 0;
    if (camera.get_aquisition_framerate(fps) == 0) {
        std::cout << "sensor get  fps: " << fps << std::endl;
    } else {
        std::cout << "sensor error to get fps" << std::endl;
    }
}

void get_framerate_limits(hal::camera_t& camera) {
    unsigned int min = 0;
    unsigned int max = 0;
    unsigned int step = 0;
    if (camera.get_aquisition_framerate_limits(min, max, step) != 0) {
        std::cout << "sensor error to get fps limits" << std::endl;
        return;
    }
    std::cout << "sensor get  fps limits:" << std::endl;
    print_limits(min, max, step);
}

void get_exposure_limits(hal::camera_t& camera) {
    unsigned int min = 0;
    unsigned int max = 0;
    unsigned int step = 0;
    if (camera.get_exposure_limits(min, max, step) != 0) {
        std::cout << "sensor error to get exposure limits" << std::endl;
        return;
    }
    std::cout << "sensor get  exposure limits:" << std::endl;
    print_limits(min, max, step);
}

void get_framecount(hal::camera_t& camera) {
    unsigned long count = 0;
    camera.get_framecount(count);
    std::cout << "sensor actual " << count << std::endl;
}

void set_roi_offset(hal::camera_t& camera) {
    int x = kDefaultOffset;
    int y = kDefaultOffset;
    std::cout << "Enter a value for x_offset:";
    koscanf("%d", x);
    std::cout << "Enter a value for y_offset:";
    koscanf("%d", y);
    int const status = camera.set_roi_xyoffset(static_cast<unsigned int>(x), static_cast<unsigned int>(y));
    if (status == 0) {
        std::cout << "\t\t set roi offset x,y : " << x << "," << y << std::endl;
    } else {
        std::cout << "\t\t sensor error to set roi x,y offset\n";
    }
    kosstream("%d", status);  // kept: waits for the reply that another command sends; stations count its items
}

void get_roi_offset(hal::camera_t& camera) {
    unsigned int x = 0;
    unsigned int y = 0;
    if (camera.get_roi_xyoffset(x, y) == 0) {
        std::cout << "\t\tget roi offset x,y : " << x << "," << y << std::endl;
    } else {
        std::cout << "\t\tsensor error to set roi x,y offset\n";  // kept: "set", though it is the get that failed
    }
}

void print_imager_type(hal::camera_t& camera) {
    switch (camera.get_imxtype()) {
        case hal::imx_te::imx296:
            std::cout << "\t\t imager 296 " << std::endl;
            break;
        case hal::imx_te::imx567:
            std::cout << "\t\t imager 567 " << std::endl;
            break;
        default:
            std::cout << "\t\t no imager  " << std::endl;
            break;
    }
}

}  // namespace

void get_trigger_counter() {
    unsigned long frame_id = 0;
    long missed = 0;
    p_camera->get_missed_trigger_counter(frame_id, missed);
    std::cout << "READ MISSED TRIGGER COUNTER: " << missed << " FRAME ID: " << frame_id << std::endl;
}

int reset_trigger_counter() {
    std::cout << "RESET MISSED TRIGGER COUNTER: " << std::endl;
    return p_camera->reset_missed_trigger_counter();
}

int set_scanmode() {
    // "SUBSAMPLDING" is kept.
    std::cout << "Enter a value for hscanmode: 0-NORMAL_ROI, 1-SUBSAMPLDING, 2-BINNING:";
    int mode = 0;
    koscanf("%d", mode);
    return p_camera->set_hscanmode(static_cast<hal::roi_te>(mode));
}

int get_scanmode() {
    hal::roi_te mode = hal::roi_te::normal;
    int const status = p_camera->get_hscanmode(mode);
    std::cout << "Scanmode = " << static_cast<unsigned int>(mode) << std::endl;
    kosstream("%d", status);  // kept: waits for the reply that another command sends; stations count its items
    return status;
}

namespace {

void run_option(char option, hal::camera_t& camera, int& fps) {
    switch (option) {
        case 'm':
            camera.single_shot();
            break;
        case 't':
            camera.set_trigger_mode(hal::trigger_te::continuous);
            break;
        case 'T':
            camera.set_trigger_mode(hal::trigger_te::manual);
            break;
        case 'W':
            get_trigger_mode(camera);
            break;
        case 'u':
            set_framerate(camera, fps);
            break;
        case 'U':
            get_framerate(camera);
            break;
        case 'L':
            get_framerate_limits(camera);
            break;
        case 'v':
            camera.start_acquisition();
            break;
        case 'V':
            camera.stop_acquisition();
            break;
        case 'e':
            sensor_get([](unsigned int& gain) { return p_camera->get_gain(gain); }, kGain);
            break;
        case 'E':
            sensor_set([](unsigned int& gain) { return p_camera->set_gain(gain); }, kGain);
            break;
        case 'f':
            sensor_get([](unsigned int& exposure_us) { return p_camera->get_exposure(exposure_us); }, kExposure);
            break;
        case 'F':
            sensor_set([](unsigned int& exposure_us) { return p_camera->set_exposure(exposure_us); }, kExposure);
            break;
        case 'w':
            get_exposure_limits(camera);
            break;
        case 'i':
            get_framecount(camera);
            break;
        case 'j':
            set_roi_offset(camera);
            break;
        case 'J':
            get_roi_offset(camera);
            break;
        case 'k':
            print_imager_type(camera);
            break;
        case 's':
            get_scanmode();
            break;
        case 'S':
            set_scanmode();
            break;
        case 'z':
            get_trigger_counter();
            break;
        case 'Z':
            reset_trigger_counter();
            break;
        default:
            break;
    }
}

}  // namespace

int test_camera() {
    hal::camera_t camera(hal::camera_t::determine_imxtype(), nullptr, kRtuDevice, kDeviceAccess);
    p_camera = &camera;
    int fps = 0;  // the last rate typed: an entry that does not convert repeats it
    while (true) {
        std::cout << kMenu;
        char option = kExitKey;
        kogetchar(option);
        std::cout << "\t\tYour option = " << option << std::endl;
        if (option == kExitKey) {
            return 0;
        }
        run_command([&] { run_option(option, camera, fps); });
    }
}
