// A network of this process and all that it starts.
#pragma once

#include "sim/core/error.h"

namespace sim {

// Leaves the host's network for one with nothing but a loopback interface. Needs no rights where the host lets users
// make namespaces. Before any thread is started.
Error enter_private_network();

}  // namespace sim
