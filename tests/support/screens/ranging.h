// What the ranging menu prints, as the tests expect it.
#pragma once

#include <string>

#include "tests/support/screens/shell.h"

namespace screens {

// The ranging menu with the echo of the key that answers it.
inline std::string tof_menu(char key) {
    std::string text = "\t\t\n\n\n\n\nTOF Control\n\n\t\tCommands:\n";
    for (char const* line :
         {"a: Set resolution 16 - 4x4, 64 - 8x8         ", "b: Set frequency (4x4 1-60 hz) (8x8 1-15 hz) ",
          "c: Set Ranging Mode\t(1 - CONTINUOUS, 3 - AUTONOMOUS)", "d: Set Integration Time",
          "e: Set Calibration Parameters", "f: XTalk Calibration", "g: Number of measurements", "h: Shot",
          "i: Illumination module test", "j: Power mode (0 sleep; 1 wakeup)", "x: Exit"}) {
        text += std::string("\t\t  ") + line + "\n";
    }
    return text + "Please enter your option: \t\tYour option = " + key + "\n";
}

// What a key prints that no command has; the exit key too.
inline std::string unknown_command(char key) {
    return std::string("unknown command ") + key + "\n";
}

}  // namespace screens
