// How the menus of this room ask for a number and show a flag.
#pragma once

#include <iostream>

#include "app/terminal_input.h"

// The number that is typed below the prompt; 0 where the text is none. Throws no_answer.
template <typename Number>
Number ask_below(char const* prompt) {
    std::cout << prompt << std::endl;
    Number value = 0;
    read_number(value);
    return value;
}

inline void print_flag(char const* label, unsigned char flag) {
    std::cout << label << (flag != 0 ? "TRUE " : "FALSE ") << std::endl;
}
