// What a device shows at one moment, and how two moments differ.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "sim/control/control_link.h"
#include "sim/core/error.h"

namespace sim {

// An object of objects: "device" (connected, message), and of one that is connected its "properties" by their names,
// "nodes" (whether each is there, by its path), "faults" (rule and fired, by its number) and "programs" (list, a text).
using Snapshot = nlohmann::json;

// Reads it all; an error where the device has gone or does not answer in time. Blocks.
Error read_snapshot(ControlLink& link, ControlLink::Deadline until, Snapshot& snapshot);
// Reads of it what "watch" does not tell, the nodes, faults and programs; the same errors. Blocks.
Error read_lists(ControlLink& link, ControlLink::Deadline until, Snapshot& snapshot);
// Follows lines of "watch --json".
void take_changes(std::vector<std::string> const& lines, Snapshot& snapshot);
// Of no device, and why.
Snapshot lost_device(Error const& why);

// The members of the members that are others in `now`; null for those that are gone. Empty where nothing differs.
Snapshot difference(Snapshot const& before, Snapshot const& now);

}  // namespace sim
