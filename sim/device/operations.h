// The names of all operations of the library, as the journal and the fault rules use them.
#pragma once

#include <string_view>
#include <vector>

namespace sim {

// "class_t::operation", sorted. Constructors and destructors are among them.
std::vector<std::string_view> const& operations();

// Whether `pattern`, in which * stands for any characters, describes the whole of `name`.
bool matches(std::string_view pattern, std::string_view name);
// Whether `pattern` describes at least one operation.
bool names_an_operation(std::string_view pattern);

}  // namespace sim
