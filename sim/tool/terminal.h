// What the terminal at standard output can show.
#pragma once

#include <cstddef>

namespace sim {

// Columns; 0 where it is none, or does not say.
std::size_t terminal_width();
// Whether it shows colours, and the user lets it: NO_COLOR, where it is set, does not.
bool terminal_has_colours();

}  // namespace sim
