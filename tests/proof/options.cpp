// The options of the long proofs.
#include "tests/proof/options.h"

#include <algorithm>
#include <stdexcept>

namespace proof {

unsigned long take_option(std::vector<std::string>& arguments, std::string const& name, unsigned long fallback) {
    std::string const value = take_word(arguments, name);
    return value.empty() ? fallback : std::stoul(value);
}

std::string take_word(std::vector<std::string>& arguments, std::string const& name) {
    auto const found = std::find(arguments.begin(), arguments.end(), name);
    if (found == arguments.end()) {
        return {};
    }
    if (found + 1 == arguments.end()) {
        throw std::invalid_argument(name + " needs a value");
    }
    std::string value = *(found + 1);
    arguments.erase(found, found + 2);
    return value;
}

bool take_flag(std::vector<std::string>& arguments, std::string const& name) {
    auto const found = std::find(arguments.begin(), arguments.end(), name);
    bool const given = found != arguments.end();
    if (given) {
        arguments.erase(found);
    }
    return given;
}

}  // namespace proof
