// The illumination menu's commands that read or write the module's status records.
#pragma once

// They work on p_illumination (illumination_object.h) at the terminal, as the commands of illumination.h do. A readout
// whose read failed says so and prints zeros.
void get_spot_type();
void get_spot_states();
void get_spot_flags();
void get_error_code();
void get_exposure_mode();
void set_exposure_mode();
void get_internal_temp();
void get_external_temp();
void get_guards();
// Asks for all four guards and writes them at once; none keeps its old state.
void set_guards();
