// Every question that the console asks: the commands that ask, and what each prints and calls before.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/support/menus.h"

namespace dialogues {

using namespace menus;

struct Question {
    std::string printed;  // since the key or the answer before
    Calls calls;          // likewise
    std::string answer;
    bool to_the_client = false;  // in socket mode
};

struct Dialogue {
    std::string name;
    Menu const& menu;
    char key;
    std::vector<Question> questions;
};

inline void PrintTo(Dialogue const& dialogue, std::ostream* out) {
    *out << dialogue.name;
}

// A command with one question and nothing before it.
inline Dialogue one(std::string const& name, Menu const& menu, char key, std::string const& prompt) {
    return {name, menu, key, {{prompt, {}, "1"}}};
}
inline Dialogue one_to_the_client(std::string const& name, Menu const& menu, char key, std::string const& prompt) {
    return {name, menu, key, {{prompt, {}, "1", true}}};
}

inline Dialogue colour(std::string const& name, char key, std::string const& operation) {
    return {name,
            kIllumination,
            key,
            {{"Enter a value in range: 0 - 100\n",
              {"illumination_t::get_brightness_limits_" + operation + "() = 0 [0, 100, 1]"},
              "5"}}};
}

inline std::vector<Question> to_the_client(std::vector<std::string> const& prompts) {
    std::vector<Question> questions;
    for (std::string const& prompt : prompts) {
        questions.push_back({prompt, {}, "1", true});
    }
    return questions;
}

inline std::vector<Dialogue> all() {
    return {
        one("SystemState", kSystem, 'f', "Enter device state: "),

        one_to_the_client("RtuImager", kRtu, 'a', "Enter a value for imager type: 1- imx296, 2- ix567 \n"),
        one_to_the_client("RtuTrigger", kRtu, 't', "Enter a value for fps: "),
        one("RtuProhibitedTime", kRtu, 'b', "Enter a value for trigger_prohibited_time: "),
        one("RtuOffset", kRtu, 'c', "Enter a value for exposure_offset: "),
        one("RtuExposure", kRtu, 'e', "Enter a value for exposure: "),

        one_to_the_client("CameraRate", kCamera, 'u', "Enter a value for fps: "),
        {"CameraOffset", kCamera, 'j', to_the_client({"Enter a value for x_offset:", "Enter a value for y_offset:"})},
        one_to_the_client("CameraScanMode", kCamera, 'S',
                          "Enter a value for hscanmode: 0-NORMAL_ROI, 1-SUBSAMPLDING, 2-BINNING:"),
        one("CameraGain", kCamera, 'E', "Enter a value for gain: "),
        one("CameraExposure", kCamera, 'F', "Enter a value for exposure: "),

        one("SensorGain", kImx296, 'E', "Enter a value for gain: "),
        one("SensorScanMode", kImx296, 'H', "Enter a value for hscanmode: "),

        {"DioSetConfig", kDio, 'f',
         to_the_client({"Setup DIO config: \nDIO Pin:", "DIO type 0-npn 1-pnp 2-pupu:",
                        "DIO func 0-Out 1-OutIll 2-In 3-InTrigIm 4-InQuadrA 5-InQuadrB:", "DIO config 0-NO 1-NC :",
                        "DIO invert 0-NO 1-INV:", "DIO off_del active:", "DIO off_del time:", "DIO on_del active:",
                        "DIO on_del time:", "DIO pulse active:", "DIO pulse time:"})},
        one_to_the_client("DioReadConfig", kDio, 'F', "DIO Pin:"),
        {"DioSetValue", kDio, 'h', to_the_client({"", "Value for pin :1"})},
        one_to_the_client("DioGetValue", kDio, 'H', "DIO Pin:"),

        one("LightPattern", kIllumination, 'A', "Enter a value for the pattern 0 - Strobe, 1 - Continuous:"),
        one("LightSegments", kIllumination, 'B', "Enter a value for segments: "),
        one("LightBrightness", kIllumination, 'C', "Enter a value for brightness: "),
        {"LightExposure",
         kIllumination,
         'J',
         {{"set exposure mode: 0: CONTINOUS, 1: SWITCH, 2: FLASH\n", {}, "2"},
          {"Exposure time is needed for FLASH mode, enter a value: \n", {}, "500"}}},
        one("LightDcLimit", kIllumination, 'L', "set_dc_brightness_limit\n"),
        one("LightFlashLimit", kIllumination, 'M', "set_flash_brightness_limit\n"),
        one("LightMode", kIllumination, 'N', "mode 0:INACTIVE 1:ACTIVE \n"),
        one("LightOffLimit", kIllumination, 'P', " SET OT OFF LIMIT: \n"),
        {"LightGuards",
         kIllumination,
         'Q',
         {{"set guards: OT: 0 FALSE, 1 TRUE\n", {}, "1"},
          {"set guards: DVS: 0 FALSE, 1 TRUE\n", {}, "1"},
          {"set guards: AUTOCAL: 0 FALSE, 1 TRUE\n", {}, "1"},
          {"set guards: PVD: 0 FALSE, 1 TRUE\n", {}, "1"}}},
        one("LightDecrease", kIllumination, 'r', " SET OT DECREASE LIMIT: \n"),
        colour("LightRed", 's', "red"),
        colour("LightGreen", 't', "green"),
        colour("LightBlue", 'u', "blue"),
        one("LightRedLed", kIllumination, 'K', "set led state: \n RED: 0 - disable 1 - enable\n"),
        one("LightGreenLed", kIllumination, 'Z', "set led state: \n GREEN: 0 - disable 1 - enable\n"),
        one("LightAlterLed", kIllumination, 'Y', "set led state: \n ALTER: 0 - disable 1 - enable\n"),

        one("FocusPosition", kAutofocus, 'A', "AF new pos: \n"),
        one("FocusDoeMode", kAutofocus, 'h',
            "AF doe mode: 0 = doe is disabled, 1 = doe is enabled and off by trigger \n"),
        one("FocusDoeForce", kAutofocus, 'i', "AF doe led: 0 = doe follows doe mode, 1 = doe is forced to active\n"),
        one("FocusDeviceType", kAutofocus, 'l', "enter device type: 1: R47XXXX1 2: R47XXXX2 3: R47XXXX3\n"),
        one("FocusPositionMm", kAutofocus, 'M', "AF new pos: \n"),
        one("FocusMaintenance", kAutofocus, 'n', "set AF maintenance mode: 0 = disabled, 1 = enabled\n"),

        one("GyroSensor", kGyro, 'd', "Please enter sensor id: "),
        {"GyroDefaults",
         kGyro,
         'D',
         {{"Sensor id: 0\nPlease frame rate ", {}, "7"},
          {"Please enter frame rate: [0]\n", {}, "20"},
          {"Please enter latency: [0]\n", {}, "3"}}},
        {"GyroActivation",
         kGyro,
         'A',
         {{"Please enter sensor id: [0]\n", {}, "37"},
          {"Please enter frame rate: [50]\n", {}, "12.5"},
          {"Please enter latency: [100]\n", {}, "30"}}},

        one("AlarmAlpha", kAlarm, 'a', "Please enter angle"),
        one("AlarmBeta", kAlarm, 'b', "Please enter angle"),
        one("AlarmGamma", kAlarm, 'g', "Please enter angle"),

        one("TofResolution", kTof, 'a', "Enter resolution: "),
        one("TofFrequency", kTof, 'b', "Enter value: "),
        one("TofRangingMode", kTof, 'c', "Enter value: "),
        one("TofIntegrationTime", kTof, 'd', "Enter value: "),
        one("TofPowerMode", kTof, 'j', "Enter value: "),
        one("TofMeasurements", kTof, 'g', "Enter number of measurements: "),
        {"TofCalibration",
         kTof,
         'e',
         {{"Enter Reflectance percent: ", {}, "10"},
          {"Old Reflectance percent : 3\nNew Reflectance percent : 10\nEnter Number Of Samples: ",
           {"tof_t::set_calibration_reflectance_percent(10) = 0"},
           "5"},
          {"Old Number Of Samples : 4\nNew Number Of Samples : 5\nEnter Object Distance: ",
           {"tof_t::set_calibration_nb_samples(5) = 0"},
           "700"}}},
    };
}

}  // namespace dialogues
