// What the menus of the illumination and the autofocus print, as the tests expect it.
#pragma once

#include <string>

#include "tests/support/screens/shell.h"

namespace screens {

// The illumination menu with the echo of the key that answers it.
inline std::string illumination_menu(char key) {
    std::string text = kTopUsage + "\t\t Illumination Low Level Control v0.1\n\n\t\t Commands:\n";
    for (char const* label : {"a: get pattern        ",
                              "A: set pattern ",
                              "b: get segments        ",
                              "B: set segments ",
                              "c: get brightness        ",
                              "C: set brightness ",
                              "d: get spot type ",
                              "e: get spot states ",
                              "f: get spot flags ",
                              "g: get error code ",
                              "h: enable protected write ",
                              "i: disable protected write ",
                              "j: get EXPOSURE ",
                              "J: set EXPOSURE ",
                              "l: get DC BRIGHTNESS LIMIT ",
                              "L: set DC BRIGHTNESS LIMIT  ",
                              "m: get FLASH BRIGHTNESS LIMIT ",
                              "M: set FLASH BRIGHTNESS LIMIT  ",
                              "n: get MODE ",
                              "N: set MODE  ",
                              "o: get internal temperature  ",
                              "O: get external temperature  ",
                              "p: get OT off limit  ",
                              "P: set OT off limit  ",
                              "q: get guards  ",
                              "Q: set guards  ",
                              "r: set OT limit decrease  "}) {
        text += std::string("\t\t ") + label + "\n";
    }
    for (char const* label :
         {"s: set illum red brightness", "S: get illum red brightness", "t: set illum green brightness",
          "T: get illum green brightness", "u: set illum blue brightness", "U: get illum blue brightness",
          "v: check is illum available"}) {
        text += padded(std::string("\t\t  ") + label, 41);
    }
    for (char const* label : {"k: get red LED STATE ", "K: set red LED STATE  ", "z: get green LED STATE ",
                              "Z: set green LED STATE  ", "y: get alter LED STATE ", "Y: set alter LED STATE  "}) {
        text += std::string("\t\t ") + label + "\n";
    }
    return text + "Please enter your option: Your Option = " + key + "\n";
}

// The autofocus menu with the echo of the key that answers it.
inline std::string autofocus_menu(char key) {
    std::string text = kTopUsage + "\n\t/************************ AUTOFOCUS TOPICS ***********************/\n";
    for (char const* label :
         {"a: AF get position", "A: AF set position", "b: AF reset", "c: AF calibrate",
          "d: AF read calibration frequency", "e: AF error", "f: check is autofocus available", "g: AF limits",
          "h: AF DOE mode", "i: AF DOE force active", "l: AF get position limits in mm", "m: AF get position in mm",
          "M: AF set position in mm", "n: AF set maintenance mode"}) {
        text += padded(std::string("\t\t  ") + label, 53);
    }
    return text + "\nPlease enter your option: Your Option = " + key + "\n";
}

}  // namespace screens
