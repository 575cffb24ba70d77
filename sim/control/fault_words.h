// Fault rules as the control grammar has them.
#pragma once

#include "sim/control/command.h"
#include "sim/device/faults.h"

namespace sim {

// Reads "OPERATION" and then, in any order, which calls or callbacks it takes and at least one effect. A rule that can
// do nothing to anything that is called so is refused.
Error parse_fault_rule(Words const& words, FaultRule& rule);

// What rules can name: a line for each operation and callback whose name the pattern describes, or, without a *, has in
// it; all for an empty one. Empty where there is none.
std::string list_operations(std::string const& pattern);
// What is said where none is called so.
Error no_operation(std::string const& name);

}  // namespace sim
