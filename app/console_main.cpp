// The console from its root check to the end of its main menu.
#include "app/console_main.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

#include "app/console_io.h"
#include "app/device_check.h"
#include "app/device_paths.h"
#include "app/system_state.h"
#include "hal/types.h"
#include "menus/imaging/camera.h"
#include "menus/imaging/dio.h"
#include "menus/imaging/image_sensor.h"
#include "menus/imaging/rtu.h"
#include "menus/light/autofocus.h"
#include "menus/light/illumination.h"
#include "menus/motion/button.h"
#include "menus/motion/gyro.h"
#include "menus/motion/gyro_alarm.h"
#include "menus/motion/gyro_delegate.h"
#include "menus/ranging/tof.h"
#include "net/socket_console.h"

char const* g_gyro_firmware = kHubFirmware;

namespace {

// Kept: the camera is listed twice, and 's' is a dead entry; socket mode starts with the unlisted 'L'.
constexpr char const* kMainMenu =
    "\033[0m\n\n\n\n\n****  Enter the Option ******\n"
    "\t\t a. Menu DIO                 \n"
    "\t\t A. Check devices            \n"
    "\t\t b. Menu RTU                 \n"
    "\t\t c. Menu Illumination        \n"
    "\t\t e. Menu imx296              \n"
    "\t\t E. Menu imx567              \n"
    "\t\t f. Menu Auto Focus          \n"
    "\t\t k. Menu Camera              \n"
    "\t\t l. Menu System              \n"
    "\t\t                             \n"
    "\t\t g. Menu Gyrometer           \n"
    "\t\t G. Menu Alarm               \n"
    "\t\t h. Menu Gyro delegate       \n"
    "\t\t H. Menu Delegate + Alarm    \n"
    "\t\t s. Menu socket              \n"
    "\t\t k. Menu Camera              \n"
    "\t\t t. Test Button              \n"
    "\t\t p. Test TOF                 \n"
    "\t\t O. Use old gyro fw          \n"
    "\n\n                              \n"
    "\t\t x. Exit (also 0)            \n"
    "\nPlease enter your option: ";

// The results are of no interest: the device check tells whether the lines are there.
void prepare_gpio_lines() {
    std::cout << "System calls" << std::endl;
    for (char const* command : {"echo 481 > /sys/class/gpio/export", "echo 492 > /sys/class/gpio/unexport"}) {
        [[maybe_unused]] int const result = std::system(command);
    }
}

void use_old_gyro_firmware() {
    g_gyro_firmware = kOldHubFirmware;
}

// True where the word names a whole run of the console; a word that is not known is ignored.
bool run_command_word(char const* word) {
    std::cout << std::strlen(word) << std::endl;
    if (std::strcmp(word, "socket") == 0) {
        test_socket();
        return true;
    }
    if (std::strcmp(word, "alarm") == 0) {
        std::cout << "Teste Gyro Alarm\n";
        test_gyro_alarm();
        return true;
    }
    if (std::strcmp(word, "old_gyro_fw") == 0) {
        use_old_gyro_firmware();
    }
    return false;
}

void run_main_menu() {
    while (true) {
        std::cout << kMainMenu;
        char option = '\0';  // stays so at the end of input, matches nothing, and the menu is shown again
        kogetchar(option);
        std::cout << "Entered Option = " << option << std::endl;
        switch (option) {
            case 'a':
                test_dio();
                break;
            case 'A':
                check_devices();
                break;
            case 'b':
                test_rtu();
                break;
            case 'c':
                test_illumination();
                break;
            case 'e':
                test_imx(static_cast<int>(hal::imx_te::imx296));
                break;
            case 'E':
                test_imx(static_cast<int>(hal::imx_te::imx567));
                break;
            case 'f':
                test_autofocus();
                break;
            case 'k':
                test_camera();
                break;
            case 'l':
                test_system();
                break;
            case 'g':
                test_gyro();
                break;
            case 'G':
                test_gyro_alarm();
                break;
            case 'h':
                test_gyro_delegate();
                break;
            case 'H':
                test_gyro_delegate_and_alarm();
                break;
            case 't':
                test_button();
                break;
            case 'p':
                test_tof();
                break;
            case 'O':
                use_old_gyro_firmware();
                break;
            case 'L':
                if (!bsock) {
                    test_socket();
                }
                break;
            case 'x':
            case '0':
                return;
            default:
                break;
        }
    }
}

}  // namespace

int console_main(int argc, char** argv) {
    if (::getuid() != 0) {
        std::cout << "You must be root, terminating\n";
        std::exit(-1);
    }
    prepare_gpio_lines();
    bool const done = argc > 1 && run_command_word(argv[1]);
    if (!done) {
        run_main_menu();
    }
    return 0;
}
