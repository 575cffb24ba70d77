// The illumination menu, and its commands that read or write one simple setting.
#pragma once

// Runs the menu at the terminal until its exit key. Returns 0.
int test_illumination();

// The commands work on p_illumination (illumination_object.h); each reads the terminal, in socket mode too, and writes
// to standard output. Those that ask throw no_answer.

// These two also add their status to the client's reply, and leave it to a later command to send it.
void get_pattern();
void set_pattern();

void enable_protected_write();
void disable_protected_write();

// Readouts: after a failed read they print 0, or what 0 stands for.
void get_red_led();
void set_red_led();
void get_green_led();
void set_green_led();
void get_alter_led();
void set_alter_led();
void get_dc_brightness_limit();
void set_dc_brightness_limit();
void get_flash_brightness_limit();
void set_flash_brightness_limit();
void get_mode();
void set_mode();
void get_ot_off_limit();
void set_ot_off_limit();
void set_limit_ot_decrease();

// One colour: value and limits. No failure is reported.
void set_illum_brightness_red();
void get_illum_brightness_red();
void set_illum_brightness_green();
void get_illum_brightness_green();
void set_illum_brightness_blue();
void get_illum_brightness_blue();

// Says whether the module is there.
void check_illum();

// No key of the menu calls these four; its keys use the value prompts. They add a status to the client's reply
// as get_pattern() does, and the two that write take their number from the client in socket mode.
void get_segments();
void set_segments();
void get_brightness();
void set_brightness();
