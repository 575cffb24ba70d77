// The numbers of errno by their names.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sim {

// "EIO"; the number itself where it has no name.
std::string error_name(int error);
// Nothing for what names none, and for one that is another's second name.
std::optional<int> error_named(std::string_view name);

}  // namespace sim
