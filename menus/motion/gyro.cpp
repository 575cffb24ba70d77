// The low-level menu of the motion sensor hub.
#include "menus/motion/gyro.h"

#include <cstdint>
#include <iostream>

#include "app/console_main.h"
#include "app/module_information.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "hal/gyro.h"
#include "menus/motion/hub.h"

namespace {

// What the menu's commands work on. The rate and latency of key 'D' and those of an activation are kept apart.
hal::gyro_t* g_gyro = nullptr;
std::uint32_t g_gyro_sensor_id = 0;
float g_gyro_default_rate = 0.0F;          // Hz
std::uint32_t g_gyro_default_latency = 0;  // ms
float g_gyro_rate = 50.0F;                 // Hz
std::uint32_t g_gyro_latency = 100;        // ms

// Kept: "llatency", 'F' without a full stop, 'r' that does nothing, and 'P', 'q' and 't' that are not listed.
constexpr char const* kMenu =
    "\t\t Gyrometer low level control v1.0\n\n"
    "\t\t Commands:\n"
    "\t\t d: set default sensor\n"
    "\t\t D: set defaults (e.g. frame rate, llatency)\n\n"
    "\t\t a: activate and read default sensor \n"
    "\t\t A: deactivate default sensor\n\n"
    "\t\t w: Virtual  sensor list    \n"
    "\t\t W: Physical sensor list\n\n"
    "\t\t s: Info default virtual sensor cfg\n"
    "\t\t S: Info default virtual sensor \n\n"
    "\t\t f: upload Firmware       \n"
    "\t\t F  info Firmware       \n\n"
    "\t\t e: info irq config\n"
    "\t\t E: info irq \n\n"
    "\t\t b: boot       \n"
    "\t\t B: install callbacks       \n"
    "\t\t n: upload boot default       \n"
    "\t\t r: read and process fifos\n"
    "\n\nPlease enter your option: ";

// Boots the hub and switches its orientation sensor on.
void start_hub() {
    g_gyro->boot();
    g_gyro->install_callbacks();
    g_gyro->info_firmware();
    std::cout << "\n\n\n\n\n";
    g_gyro->activate_vsensor(37, 5.0F, 1);
}

void set_default_sensor() {
    std::cout << "Please enter sensor id: ";
    read_number(g_gyro_sensor_id);
    std::cout << "Your Option = " << g_gyro_sensor_id << std::endl;
}

void set_defaults() {
    std::cout << "Sensor id: " << g_gyro_sensor_id << std::endl;
    std::cout << "Please frame rate ";
    read_number(g_gyro_sensor_id);  // kept: the answer becomes the sensor id
    std::cout << "Please enter frame rate: [" << g_gyro_default_rate << "]" << std::endl;
    read_number(g_gyro_default_rate);
    std::cout << "Please enter latency: [" << g_gyro_default_latency << "]" << std::endl;
    read_number(g_gyro_default_latency);
}

void boot() {
    if (g_gyro->boot() != 0) {
        std::cout << "booting failed\n";
    }
}

}  // namespace

void activate_sensor_prompt(bool prompt) {
    static std::uint32_t sensor_id = g_gyro_sensor_id;  // kept: a later 'd' or 'D' does not reach it
    if (prompt) {
        std::cout << "Please enter sensor id: [" << sensor_id << "]" << std::endl;
        read_number(sensor_id);
        std::cout << "Please enter frame rate: [" << g_gyro_rate << "]" << std::endl;
        read_number(g_gyro_rate);
        std::cout << "Please enter latency: [" << g_gyro_latency << "]" << std::endl;
        read_number(g_gyro_latency);
    }
    std::cout << "Activating sensor: " << sensor_id << " with frame rate: " << g_gyro_rate
              << " and latency: " << g_gyro_latency << std::endl;
    g_gyro->activate_vsensor(sensor_id, g_gyro_rate, g_gyro_latency);
}

namespace {

void run_option(char option, bool& hold) {
    switch (option) {
        case 'd':
            set_default_sensor();
            break;
        case 'D':
            set_defaults();
            break;
        case 'a':
            activate_sensor_prompt(false);
            break;
        case 'A':
            activate_sensor_prompt(true);  // kept: labelled "deactivate", which takes a frame rate of 0
            break;
        case 'w':
            g_gyro->info_vsensor_list();
            break;
        case 'W':
            g_gyro->info_psensor_list();
            break;
        case 's':
            g_gyro->info_vsensor_cfg(static_cast<int>(g_gyro_sensor_id));
            break;
        case 'S':
            g_gyro->info_vsensor(static_cast<int>(g_gyro_sensor_id));
            break;
        case 'P':
            g_gyro->info_psensor(1);
            g_gyro->info_psensor(3);
            break;
        case 'f':
            g_gyro->upload_firmware("./Bosch.fw");  // kept: an image beside the console, never the configured one
            break;
        case 'F':
        case 'q':
            g_gyro->info_firmware();
            break;
        case 'e':
            g_gyro->info_irq_ctrl();
            break;
        case 'E':
            g_gyro->info_irq();
            break;
        case 'b':
            boot();
            break;
        case 'B':
            g_gyro->install_callbacks();
            break;
        case 'n':
            start_hub();  // kept: uploads nothing and leaves the hold of the callbacks as it is
            break;
        case 't':
            hold = !hold;
            g_gyro->irq_callback_hold(hold);
            break;
        default:
            run_module_option(option, g_gyro);
            break;
    }
}

}  // namespace

int test_gyro() {
    hal::gyro_t gyro = open_hub(g_gyro_firmware);
    g_gyro = &gyro;
    start_hub();
    gyro.irq_callback_hold(false);
    bool hold = false;
    while (true) {
        top_usage();
        std::cout << kMenu;
        char option = kExitKey;
        read_option(option);
        std::cout << "Your Option = " << option << std::endl;
        if (option == kExitKey) {
            return 0;
        }
        run_command([&] { run_option(option, hold); });
    }
}
