// One client that gives one console a great many commands, and compares every reply.
#pragma once

namespace proof {

// Prints the console's memory, threads and descriptors at each tenth of the way, and what was wrong. Needs the port
// of this network for itself. Returns 0 where no reply was lost, doubled or wrong and the console did not grow.
int command_storm(unsigned long commands, unsigned int seed);

}  // namespace proof
