// File descriptors of the library's own, out of the way of the program's.
#pragma once

namespace sim {

// Moves `fd` to 10 or above, closed on exec: the program closes descriptor 0 at times, and what it opens next must
// find it free. Answers the new descriptor; -1 with errno when there is none, or when `fd` is -1.
int move_out_of_the_way(int fd);

}  // namespace sim
