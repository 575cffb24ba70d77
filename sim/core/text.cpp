// Texts as the journal and error messages write them.
#include "sim/core/text.h"

#include <array>
#include <cstdio>

namespace sim {

std::string quoted(std::string const& text) {
    std::string quoted = "\"";
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (byte < 0x20 || byte >= 0x7F) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned>(byte));
            quoted += code.data();
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

}  // namespace sim
