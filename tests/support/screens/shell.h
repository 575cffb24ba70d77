// What the console's shell prints, as the tests expect it.
#pragma once

#include <string>

namespace screens {

// A line that is filled with blanks to `length` characters, its tabs and its line end counted.
inline std::string padded(std::string line, std::size_t length) {
    line.resize(length - 1, ' ');
    return line + "\n";
}

// A text as a pseudo-terminal prints it.
inline std::string at_terminal(std::string const& text) {
    std::string converted;
    for (char const c : text) {
        converted += c == '\n' ? std::string("\r\n") : std::string(1, c);
    }
    return converted;
}

// What every run starts with.
inline std::string const kStart = "System calls\n";

// A label of the main menu in its line: two tabs, a blank, a field of 28 characters.
inline std::string main_menu_line(std::string label) {
    label.resize(28, ' ');
    return "\t\t " + label + "\n";
}

// The main menu, up to its prompt.
inline std::string main_menu() {
    std::string text = "\033[0m\n\n\n\n\n****  Enter the Option ******\n";
    for (char const* label :
         {"a. Menu DIO", "A. Check devices", "b. Menu RTU", "c. Menu Illumination", "e. Menu imx296", "E. Menu imx567",
          "f. Menu Auto Focus", "k. Menu Camera", "l. Menu System", "", "g. Menu Gyrometer", "G. Menu Alarm",
          "h. Menu Gyro delegate", "H. Menu Delegate + Alarm", "s. Menu socket", "k. Menu Camera", "t. Test Button",
          "p. Test TOF", "O. Use old gyro fw"}) {
        text += main_menu_line(label);
    }
    text += "\n\n" + std::string(30, ' ') + "\n";
    text += main_menu_line("x. Exit (also 0)");
    return text + "\nPlease enter your option: ";
}

// The main menu and the echo of the key that answers it.
inline std::string main_menu(char key) {
    return main_menu() + "Entered Option = " + key + "\n";
}

// A whole run that visits one menu by its key and leaves the console from the main menu.
inline std::string visit(char key, std::string const& menu_output) {
    return kStart + main_menu(key) + menu_output + main_menu('x');
}

// The head of the menus that offer module information.
inline std::string const kTopUsage =
    "\n\n\nPlease Enter the Option******\n"
    "\t 1. Get Status            \n"
    "\t 2. Get Revision          \n"
    "\t 3. Get Serial Number     \n"
    "\t 0. Exit                  \n\n\n";

// What key '0' of the component menus prints before it ends the process.
inline std::string const kGoodBye = "\n\033[0mGood Bye\n";

// The system state menu, up to its prompt, and with the echo of the key that answers it.
inline std::string const kSystemStart = "\n\n\n\n\nStarted test program for the_system component\n";
inline std::string const kSystemMenu =
    "\t\t f. Set Device State BOOT = 1,  CONFIRM = 2, RUNNING = 3, FIND_ME= 4, WARNING = 5, ERROR = 6,\n"
    " \t\t PREVIEW_NETWORK_RESET = 9, PRVIEW_LOCALIZE = 10 \n"
    "\t\t F. Get Device State BOOT = 1,  CONFIRM, RUNNING, FIND_ME, WARNING, ERROR        \n"
    "\t\t h. Trigger Heartbeat\n"
    "\t\t x. Return to Main\n\n"
    "\n\n Enter your option = ";
inline std::string system_menu(char key) {
    return kSystemMenu + "\n\tYour option = " + key + "\n";
}

// The console's line about one that the client sent, and the main menu that it answers so.
inline std::string line_from_client(std::string const& line) {
    return "ReadLine: " + line + "\n";
}
inline std::string main_menu_of_client(char key) {
    return main_menu() + line_from_client(std::string{key}) + "Entered Option = " + key + "\n";
}

// The local menu of socket mode.
inline std::string const kSocketMenu =
    "\t\t  Socket test menu     \n"
    "\t\t  x: Return to main     \n"
    "\n\n   Please enter your option: ";
inline std::string socket_menu(char key) {
    return kSocketMenu + "\t\t Your Option = " + key + "\n";
}

// What a run of the console starts with that is told to start in socket mode.
inline std::string const kSocketModeStart = kStart + "6\nint test_socket()\n" + kSocketMenu + kStart;

}  // namespace screens
