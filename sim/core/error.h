// How what may fail says why.
#pragma once

#include <string>

namespace sim {

// A message of one line; empty: done.
using Error = std::string;

}  // namespace sim
