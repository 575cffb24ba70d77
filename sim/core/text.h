// Texts as the journal and error messages write them.
#pragma once

#include <string>

namespace sim {

// In double quotes, with \" \\ \n and \xHH for what cannot be printed.
std::string quoted(std::string const& text);

}  // namespace sim
