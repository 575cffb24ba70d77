// Texts as the journal, JSON and error messages write them, and patterns of texts.
#include "sim/core/text.h"

#include <array>
#include <cstdio>

namespace sim {

namespace {

std::string code_of(unsigned char byte) {
    std::array<char, 8> code{};
    std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned>(byte));
    return code.data();
}

// Bytes of the UTF-8 character that `text` begins with; 0 where it begins with none.
std::size_t utf8_character(std::string_view text) {
    auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (byte(0) < 0x80) {
        return 1;
    }
    std::size_t const size = byte(0) < 0xC2 ? 0 : byte(0) < 0xE0 ? 2 : byte(0) < 0xF0 ? 3 : byte(0) < 0xF5 ? 4 : 0;
    for (std::size_t i = 1; i < size; ++i) {
        if (i == text.size() || (byte(i) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    // What could be written shorter, the halves of a pair of UTF-16, and what is beyond U+10FFFF.
    bool const none = size > 0 && ((byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xED && byte(1) > 0x9F) ||
                                   (byte(0) == 0xF0 && byte(1) < 0x90) || (byte(0) == 0xF4 && byte(1) > 0x8F));
    return none ? 0 : size;
}

// The same, and 0 for one that controls terminals.
std::size_t plain_character(std::string_view text) {
    std::size_t const size = utf8_character(text);
    auto const first = static_cast<unsigned char>(text[0]);
    bool const controls = size == 1 ? (first < 0x20 && first != '\t') || first == 0x7F
                                    : first == 0xC2 && size == 2 && static_cast<unsigned char>(text[1]) < 0xA0;
    return controls ? 0 : size;
}

}  // namespace

std::string quoted(std::string_view text) {
    std::string quoted = "\"";
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (byte < 0x20 || byte >= 0x7F) {
            quoted += code_of(byte);
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string printable(std::string_view text) {
    std::string printable;
    while (!text.empty()) {
        std::size_t const size = plain_character(text);
        printable += size > 0 ? std::string(text.substr(0, size)) : code_of(static_cast<unsigned char>(text.front()));
        text.remove_prefix(size > 0 ? size : 1);
    }
    return printable;
}

std::string utf8_text(std::string_view text) {
    std::string utf8;
    while (!text.empty()) {
        std::size_t const size = utf8_character(text);
        utf8 += size > 0 ? std::string(text.substr(0, size)) : code_of(static_cast<unsigned char>(text.front()));
        text.remove_prefix(size > 0 ? size : 1);
    }
    return utf8;
}

std::string json_text(std::string_view text) {
    std::string json = "\"";
    while (!text.empty()) {
        std::size_t const size = utf8_character(text);
        char const c = text.front();
        if (size == 0) {
            json += '\\' + code_of(static_cast<unsigned char>(c));
        } else if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(c));
            json += code.data();
        } else {
            json += text.substr(0, size);
        }
        text.remove_prefix(size > 0 ? size : 1);
    }
    return json + "\"";
}

std::string word_text(std::string_view text) {
    if (!text.empty() && text.find_first_of(" \t\r\"") == std::string_view::npos) {
        return std::string(text);
    }
    std::string word = "\"";
    for (char const c : text) {
        if (c == '"' || c == '\\') {
            word += '\\';
        }
        word += c;
    }
    return word + '"';
}

bool matches(std::string_view pattern, std::string_view name) {
    std::size_t at = 0;
    std::size_t after_star = std::string_view::npos;
    std::size_t taken = 0;  // by the last star, up to here
    for (std::size_t i = 0; i < name.size();) {
        if (at < pattern.size() && pattern[at] == '*') {
            after_star = ++at;
            taken = i;
        } else if (at < pattern.size() && pattern[at] == name[i]) {
            ++at;
            ++i;
        } else if (after_star != std::string_view::npos) {
            at = after_star;
            i = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', at) == std::string_view::npos;
}

}  // namespace sim
