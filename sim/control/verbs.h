// The verbs of the control grammar, a function for each file of them.
#pragma once

#include "sim/control/command.h"

namespace sim {

void add_state_verbs(Commands& commands);        // show, set
void add_fault_verbs(Commands& commands);        // fault
void add_node_verbs(Commands& commands);         // node
void add_imaging_verbs(Commands& commands);      // drive, power, fit, trigger
void add_motion_verbs(Commands& commands);       // tilt, press, button
void add_ranging_verbs(Commands& commands);      // scene
void add_time_verbs(Commands& commands);         // clock, step
void add_observation_verbs(Commands& commands);  // watch, wait, expect
void add_program_verbs(Commands& commands);      // programs
void add_journal_verbs(Commands& commands);      // journal

}  // namespace sim
