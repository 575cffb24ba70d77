// The button test: traces timed presses and releases, and colours the light bar.
#pragma once

#include <functional>

#include "hal/button.h"
#include "hal/rtu.h"
#include "menus/motion/lender.h"

// Runs the menu through console I/O until its exit key; the interrupt line's state goes to the client too.
// Returns 0.
int test_button();

// Sets the button's records. Its events must be held.
void testbutton_init(hal::button_t& button);

// The actions of the records, called from a thread of the library: each prints its name, and those with a
// light-bar action run it if it is set.
void testButtonp1();
void testButtonp2();
void testButtonp3();
void testButtonp4();
void testButtonp5();
void testButtonRelease1();
void testButtonRelease2();
void testButtonRelease3();
void testButtonRelease4();
void testButtonRelease5();

// The light-bar actions of testButtonp1 to testButtonp4, empty at first. To be set while button events are held.
extern std::function<void()> g_lightbar_p1;
extern std::function<void()> g_lightbar_p2;
extern std::function<void()> g_lightbar_p3;
extern std::function<void()> g_lightbar_p4;

// Sets all four to their colours.
void set_lightbar_actions(lender<hal::rtu_t> const& rtu);
