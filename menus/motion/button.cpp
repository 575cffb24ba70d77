// The button test: traces timed presses and releases, and colours the light bar.
#include "menus/motion/button.h"

#include <iostream>

#include "app/console_io.h"
#include "app/device_paths.h"
#include "app/device_type.h"
#include "app/terminal_input.h"

std::function<void()> g_lightbar_p1;
std::function<void()> g_lightbar_p2;
std::function<void()> g_lightbar_p3;
std::function<void()> g_lightbar_p4;

namespace {

constexpr char const* kMenu =
    "\t\t\n\n\n\n\nButton Control\n\n"
    "\t\t  r: read irq value     \n"
    "\t\t  x: Exit               \n"
    "Please enter your option: ";

void trace(char const* signature) {
    std::cout << "###   " << signature << " called " << std::endl;
}

void run_if_set(std::function<void()> const& action) {
    if (action) {
        action();
    }
}

void read_irq(hal::button_t& button) {
    bool status = false;
    std::cout << "Starting read: " << status << std::endl;
    button.irq_read(status);
    std::cout << "Irq status: " << status << std::endl;
    kosstream("%d", status);
    kosstream_send();
}

}  // namespace

// Kept: the actions p1, p3, p5, Release1 and Release4 exist, but no record has them.

void testButtonp1() {
    trace("void testButtonp1()");
    run_if_set(g_lightbar_p1);
}

void testButtonp2() {
    trace("void testButtonp2()");
    run_if_set(g_lightbar_p2);
}

void testButtonp3() {
    trace("void testButtonp3()");
    run_if_set(g_lightbar_p3);
}

void testButtonp4() {
    trace("void testButtonp4()");
    run_if_set(g_lightbar_p4);
}

void testButtonp5() {
    trace("void testButtonp5()");
}

void testButtonRelease1() {
    trace("void testButtonRelease1()");
}

void testButtonRelease2() {
    trace("void testButtonRelease2()");
}

void testButtonRelease3() {
    trace("void testButtonRelease3()");
}

void testButtonRelease4() {
    trace("void testButtonRelease4()");
}

void testButtonRelease5() {
    trace("void testButtonRelease5()");
}

void testbutton_init(hal::button_t& button) {
    button.press_records[0] = {50, nullptr};
    button.press_records[1] = {2000, testButtonp2};
    button.press_records[2] = {3000, nullptr};
    button.press_records[3] = {4000, testButtonp4};
    button.release_records[0] = {50, nullptr};
    button.release_records[1] = {1250, testButtonRelease2};
    button.release_records[2] = {2250, testButtonRelease3};
    button.release_records[3] = {3250, nullptr};
    button.release_records[3] = {4250, testButtonRelease5};  // kept: index 3 again, so that index 4 is never set
}

void set_lightbar_actions(lender<hal::rtu_t> const& rtu) {
    auto const colour = [&rtu](hal::color_t color) {
        return rtu.callback([color](hal::rtu_t& lent) { lent.set_lightbar_col(color); });
    };
    g_lightbar_p1 = colour({100, 255, 0, 0});
    g_lightbar_p2 = colour({100, 0, 255, 255});
    g_lightbar_p3 = colour({100, 0, 255, 0});
    g_lightbar_p4 = colour({100, 0, 0, 255});
}

int test_button() {
    hal::button_t button(kButtonDevice, static_cast<short>(get_button_irq_line()), true, 2000);
    testbutton_init(button);
    hal::rtu_t rtu(kRtuDevice, kDeviceAccess);
    lender<hal::rtu_t> const lent_rtu(rtu);
    set_lightbar_actions(lent_rtu);
    button.irq_callback_hold(false);
    while (true) {
        std::cout << kMenu;
        char option = kExitKey;
        kogetchar(option);
        std::cout << "\t\tYour option = " << option << std::endl;
        switch (option) {
            case 'r':
                read_irq(button);
                break;
            case 'x':
                return 0;
            default:
                break;
        }
    }
}
