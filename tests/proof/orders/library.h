// The library that the console of a run finds: every call succeeds, and callbacks come whenever the headers allow it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orders {

// Before the first object. `callbacks`: the most of one object; 0: none comes.
void begin_library(std::uint64_t seed, unsigned int callbacks);

// Objects that were built and not destroyed.
std::size_t living_objects();

}  // namespace orders
