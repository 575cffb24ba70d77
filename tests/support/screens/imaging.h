// What the menus of the real-time unit, the camera, the image sensor and the digital I/O print, as the tests expect it.
#pragma once

#include <string>

#include "tests/support/screens/shell.h"

namespace screens {

// The real-time unit menu: what it prints on entry, and its screen with the echo of the key that answers it.
inline std::string const kRtuStart = "\n\n\n\n\nStarted Rtu Low Level Control \n";
inline std::string rtu_menu(char key) {
    return kTopUsage +
           "\t\t Rtu Low Level Control v0.1\n"
           "\n"
           "\t\t Commands:\n"
           "\t\t a: set imager  0 - none, 1- imx296, 2- ix567 \n"
           "\t\t A: get imager  0 - none, 1- imx296, 2- ix567 \n"
           "\t\t b: set trigger prohibited time    [\xC2\xB5s] \n"
           "\t\t B: get trigger prohibited time    [\xC2\xB5s] \n"
           "\t\t c: set exposure offset            [\xC2\xB5s] \n"
           "\t\t C: get exposure offset            [\xC2\xB5s] \n"
           "\t\t e: set exposure            [\xC2\xB5s] \n"
           "\t\t E: get exposure <value>         \n"
           "\t\t m: set manual trigger           \n"
           "\t\t t: start continuous trigger     \n"
           "\t\t T: stop continuous trigger      \n"
           "\t\t p: DIO available \n"
           "\t\t x: Return to main               \n"
           "\n\nPlease enter your option: "
           "Your Option = " +
           key + "\n";
}

// The camera menu.
inline std::string camera_menu(char key) {
    std::string text =
        "\t\t\n\n\n\n\nCamera Control\n\n"
        "\t\tSensors:\n"
        "\t\t  /dev/imx296        IMX296 sensor module\n"
        "\t\t  /dev/imx567        IMX567 sensor module\n"
        "\t\tCommands:\n"
        "\t/************************ TRIGGER TOPICS ***********************/\n";
    for (char const* line :
         {"m: trigger singel shot", "t: set continuous trigger", "T: set manual trigger", "W: get current trigger mode",
          "u: set aquisition framerate", "U: get aquisition framerate", "L: get aquisition framerate limits"}) {
        text += padded(std::string("\t\t  ") + line, 41);
    }
    text +=
        "\n\t/************************ CAPTURE TOPICS ***********************/\n"
        "\t\t  v: Start Acquisition  \n"
        "\t\t  V: Stop Acquisition>  \n";
    text += padded("\t\t  e: ggain              Get gain in dB/10 dB from the sensor device", 73);
    text +=
        "\t\t  E: sgain <value>      Set gain <val> in dB/10 to the sensor device  \n"
        "!!NOTE trigger single shot 3 times to get the value correct!!\n";
    text += padded("\t\t  f: gexposure          Get exposure in us from the sensor device", 73);
    text += padded("\t\t  F: sexposure <value>  Set exposure <val> in us to the sensor device", 73);
    text += "\t\t  w: get exposure limits  Get exposure min, max, step values from the sensor device \n";
    text += padded("\t\t  i: gframecnt          Get frame counter from the sensor device", 73);
    text +=
        "\n\t/************************ IMAGE SETTING TOPICS ***********************/\n"
        "\t\t  j: sroixy <x,y>       Set roi x,y offset (ex. sroixy 10,10)\n";
    for (char const* line :
         {"J: groixy             Get roi x,y offset", "k: get imager type", "s: get scan mode", "S: set scan mode"}) {
        text += padded(std::string("\t\t  ") + line, 53);
    }
    text +=
        "\n"
        "\t\t  x: Exit               Exit\n"
        "Please enter your option: ";
    return text + "\t\tYour option = " + key + "\n";
}

// The image sensor menu.
inline std::string image_sensor_menu(char key) {
    std::string text = kTopUsage +
                       "\t\t Commands:\n"
                       "\t\t  c: gcolorttype        Get mono/color version\n"
                       "\t\t  e: ggain              Get gain in dB/10 dB from the sensor device\n"
                       "\t\t  E: sgain <value>      Set gain <val> in dB/10 to the sensor device\n";
    for (char const* line : {"h: ghscanmode", "H: shscanmode <value>", "i: gframecnt"}) {
        text += padded(std::string("\t\t  ") + line, 27);
    }
    text += "\t\t  I: gframedlt          delay delta [\xC2\xB5s] from the sensor device\n";
    text += padded("\t\t  j: sxy_offset <x,y>", 27);
    text += padded("\t\t  J: gxy_offset", 27);
    text += "\n";
    text += padded("\t\t  x: Return to main", 27);
    return text + "\n\nPlease enter your option: \t\t Your Option = " + key + "\n";
}

// The digital I/O menu: what it prints on entry, and its screen with the echo of the key that answers it.
inline std::string const kDioStart = "\n\n\n\n\nStarted test program for dio kernel driver\n";
inline std::string dio_menu(char key) {
    std::string text = kTopUsage;
    for (char const* line : {"f. Set io config", "F. Read io config", "G. Get io config", "h. Set io value",
                             "H. Get io value", "j. Set trigger from input", "k. Set autotrigger", "l. Set analog conf",
                             "m. Set analog value", "n. Enable analog out", "o. set status led"}) {
        text += padded(std::string("\t\t ") + line, 29);
    }
    text += padded("\t\t p. Read all io values", 28);
    text += padded("\t\t x. Return to Main", 29);
    return text + "\n\n\n Enter your option = \n\tYour option = " + key + "\n";
}

}  // namespace screens
