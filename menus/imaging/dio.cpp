// The digital I/O menu: configuration and values of the six pins, and the light bar.
#include "menus/imaging/dio.h"

#include <bitset>
#include <iostream>

#include "app/console_io.h"
#include "app/device_paths.h"
#include "app/module_information.h"
#include "app/no_answer.h"
#include "app/terminal_input.h"
#include "hal/rtu.h"

namespace {

// Kept: 'G' and 'j' to 'n' are listed and answered as unknown keys; 'O' works and is not listed.
constexpr char const* kMenu =
    "\t\t f. Set io config         \n"
    "\t\t F. Read io config        \n"
    "\t\t G. Get io config         \n"
    "\t\t h. Set io value          \n"
    "\t\t H. Get io value          \n"
    "\t\t j. Set trigger from input\n"
    "\t\t k. Set autotrigger       \n"
    "\t\t l. Set analog conf       \n"
    "\t\t m. Set analog value      \n"
    "\t\t n. Enable analog out     \n"
    "\t\t o. set status led        \n"
    "\t\t p. Read all io values   \n"
    "\t\t x. Return to Main        \n"
    "\n"
    "\n\n Enter your option = ";

constexpr char const* kPinPrompt = "DIO Pin:";

constexpr hal::color_t kRed{100, 255, 0, 0};
constexpr hal::color_t kCyan{100, 0, 255, 255};

// The menu's own object, beside the one of the real-time unit menu; both open the same unit. Opened on first use.
hal::rtu_t& rtu() {
    static hal::rtu_t unit(kRtuDevice, kDeviceAccess);
    return unit;
}

// Asks for a number through console I/O; one that does not convert leaves the value.
int ask_field(char const* prompt, int& value) {
    std::cout << prompt;
    koscanf("%d", value);
    return value;
}

// The library takes the low eight bits of the number typed.
unsigned char library_pin(int pin) {
    return static_cast<unsigned char>(pin);
}

void reply_status(int status) {
    kosstream("%d", status);
    kosstream_send();
}

// Kept: the off-delay is asked for before the on-delay; stations send their answers in this order.
void set_pin_config() {
    using config_t = hal::dio_pin_config_t;
    int value = 0;  // one for all fields: an entry that does not convert repeats the field before
    config_t config;
    std::cout << "Setup DIO config: \n";
    int const pin = ask_field(kPinPrompt, value);
    config.type = static_cast<config_t::pin_type>(ask_field("DIO type 0-npn 1-pnp 2-pupu:", value));
    config.func = static_cast<config_t::pin_func>(
        ask_field("DIO func 0-Out 1-OutIll 2-In 3-InTrigIm 4-InQuadrA 5-InQuadrB:", value));
    config.config = ask_field("DIO config 0-NO 1-NC :", value) != 0 ? config_t::pin_config::normally_closed
                                                                    : config_t::pin_config::normally_open;
    config.invert = ask_field("DIO invert 0-NO 1-INV:", value) != 0;
    config.off_delay_active = ask_field("DIO off_del active:", value) != 0;
    config.off_delay_time = ask_field("DIO off_del time:", value);
    config.on_delay_active = ask_field("DIO on_del active:", value) != 0;
    config.on_delay_time = ask_field("DIO on_del time:", value);
    config.pulse_active = ask_field("DIO pulse active:", value) != 0;
    config.pulse_time = ask_field("DIO pulse time:", value);
    reply_status(rtu().set_io_pin_config(library_pin(pin), config));
}

void print_pin_config(int pin, hal::dio_pin_config_t const& config) {
    std::cout << "\n\nDIO Pin: " << pin << std::endl;
    std::cout << "DIO type 0-npn 1-pnp 2-pupu: " << static_cast<int>(config.type) << std::endl;
    std::cout << "DIO func 0-Out 1-OutIll 2-In 3-InTrigIm 4-InQuadrA 5-InQuadrB : " << static_cast<int>(config.func)
              << std::endl;
    std::cout << "DIO config 0-NO 1-NC : " << static_cast<int>(config.config) << std::endl;
    std::cout << "DIO invert 0-NO 1-INV: " << config.invert << std::endl;
    std::cout << "DIO off_del active: " << config.off_delay_active << std::endl;
    std::cout << "DIO off_del time: " << config.off_delay_time << std::endl;
    std::cout << "DIO on_del active: " << config.on_delay_active << std::endl;
    std::cout << "DIO on_del time: " << config.on_delay_time << std::endl;
    std::cout << "DIO pulse active: " << config.pulse_active << std::endl;
    std::cout << "DIO pulse time: " << config.pulse_time << std::endl;
}

void send_pin_config(int pin, hal::dio_pin_config_t const& config) {
    for (int const item :
         {pin, static_cast<int>(config.type), static_cast<int>(config.func), static_cast<int>(config.config),
          static_cast<int>(config.invert), static_cast<int>(config.off_delay_active), config.off_delay_time,
          static_cast<int>(config.on_delay_active), config.on_delay_time, static_cast<int>(config.pulse_active),
          config.pulse_time}) {
        kosstream("%d", item);
    }
    kosstream_send();
}

// Kept: the pin is asked for without a prompt; a station needs none.
void set_pin_value() {
    int pin = 0;
    koscanf("%d", pin);
    std::cout << "Value for pin :" << pin;
    int value = 0;
    koscanf("%d", value);
    reply_status(rtu().set_pin_value(library_pin(pin), value > 0));
}

void get_pin_value() {
    int pin = 0;
    ask_field(kPinPrompt, pin);
    bool value = false;
    rtu().get_pin_value(library_pin(pin), value);
    std::cout << "Value: " << value << std::endl;
    kosstream("%d", value);
    kosstream("%d", value);  // kept: twice; stations take both items
    kosstream_send();
}

void get_all_pin_values() {
    std::bitset<6> values;
    rtu().get_all_pin_values(values);
    std::cout << "All DIO status: " << values << std::endl;
    kosstream("%d", static_cast<int>(values.to_ulong()));
    kosstream_send();
}

void set_light_bar(hal::color_t color) {
    kosstream("%d", rtu().set_lightbar_col(color));  // kept: waits for the next reply; stations count its items
}

}  // namespace

void read_dio_config() {
    hal::dio_pin_config_t config;
    int pin = 0;
    ask_field(kPinPrompt, pin);
    rtu().get_io_pin_config(library_pin(pin), config);
    print_pin_config(pin, config);
    send_pin_config(pin, config);
}

namespace {

void run_option(char option) {
    switch (option) {
        case 'f':
            set_pin_config();
            break;
        case 'F':
            read_dio_config();
            break;
        case 'h':
            set_pin_value();
            break;
        case 'H':
            get_pin_value();
            break;
        case 'p':
            get_all_pin_values();
            break;
        case 'o':
            set_light_bar(kRed);
            break;
        case 'O':
            set_light_bar(kCyan);
            break;
        default:
            if (!run_module_option(option, &rtu())) {
                std::cout << "Enter Valid option = " << option;
            }
    }
}

}  // namespace

int test_dio() {
    rtu();  // opened before anything is printed
    std::cout << "\n\n\n\n\nStarted test program for dio kernel driver\n";
    while (true) {
        top_usage();
        std::cout << kMenu;
        char option = kExitKey;
        kogetchar(option);
        std::cout << "\n\tYour option = " << option << std::endl;
        if (option == kExitKey) {
            return 0;
        }
        run_command([&] { run_option(option); });
    }
}
