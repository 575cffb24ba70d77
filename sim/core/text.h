// Texts as the journal, JSON and error messages write them, and patterns of texts.
#pragma once

#include <string>
#include <string_view>

namespace sim {

// In double quotes, with \" \\ \n and \xHH for what cannot be printed.
std::string quoted(std::string_view text);

// For a person's terminal: UTF-8 as it is, but \xHH for what controls terminals and for what is none.
std::string printable(std::string_view text);

// UTF-8 as it is; bytes that are none become the text \xHH.
std::string utf8_text(std::string_view text);

// As a JSON string; bytes that are no UTF-8 as utf8_text has them.
std::string json_text(std::string_view text);

// As a word of the control grammar: in double quotes where it would not be one word otherwise.
std::string word_text(std::string_view text);

// Whether `pattern`, in which * stands for any characters, describes the whole of `name`.
bool matches(std::string_view pattern, std::string_view name);

}  // namespace sim
