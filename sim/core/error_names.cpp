// The numbers of errno by their names.
#include "sim/core/error_names.h"

#include <cstring>

namespace sim {

namespace {

constexpr int kMostErrors = 4096;  // no kernel answers a greater number

}  // namespace

std::string error_name(int error) {
    char const* const name = ::strerrorname_np(error);
    return name != nullptr ? name : std::to_string(error);
}

std::optional<int> error_named(std::string_view name) {
    for (int error = 1; error < kMostErrors; ++error) {
        char const* const known = ::strerrorname_np(error);
        if (known != nullptr && name == known) {
            return error;
        }
    }
    return std::nullopt;
}

}  // namespace sim
