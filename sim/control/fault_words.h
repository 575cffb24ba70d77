// Fault rules as the control grammar has them.
#pragma once

#include "sim/control/command.h"
#include "sim/device/faults.h"

namespace sim {

// Reads "OPERATION [skip N] [count M] status S | delay MS | value V[,V...]", the effects and options in any order, at
// least one effect.
Error parse_fault_rule(Words const& words, FaultRule& rule);

}  // namespace sim
