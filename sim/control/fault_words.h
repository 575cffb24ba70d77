// Fault rules as the control grammar has them.
#pragma once

#include "sim/control/command.h"
#include "sim/device/faults.h"

namespace sim {

// Reads "OPERATION" and then, in any order, which calls or callbacks it takes and at least one effect. A rule that can
// do nothing to anything that is called so is refused.
Error parse_fault_rule(Words const& words, FaultRule& rule);

}  // namespace sim
