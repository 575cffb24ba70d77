// The tilt alarm menu, and the wiring of the tilt alarm that another menu shares.
#pragma once

#include "hal/button.h"
#include "hal/gyro_alarm.h"
#include "hal/rtu.h"
#include "menus/motion/lender.h"

// The alarm of the menu that runs; dangles once the menu has returned.
extern hal::gyro_alarm_t* p_gyro_alarm;

// Runs the menu at the terminal, in socket mode too, until its exit key. Returns 0.
int test_gyro_alarm();

// Makes the alarm show RUNNING in its taught position and WARNING out of it. `rtu` must outlive the alarm.
void show_position_as_device_state(hal::gyro_alarm_t& alarm, hal::rtu_t& rtu);

// Makes a press of 5 s teach the alarm its position on release. The button's events must be held.
void teach_by_long_press(hal::button_t& button, lender<hal::gyro_alarm_t> const& alarm);
