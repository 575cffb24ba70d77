// Tells the two hardware variants apart.
#pragma once

// 0: an R47 device, at least one of whose three driver nodes opens for reading; says so on standard output.
// 1: another variant; prints nothing. Looks anew at each call.
int determine_device_type();

// The interrupt line of the user button: 82 on an R47 device, 44 on the other variant. Prints what
// determine_device_type() prints.
int get_button_irq_line();
