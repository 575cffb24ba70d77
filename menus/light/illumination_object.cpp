// The illumination module of the menu that runs, and what both sources of its commands do with it.
#include "menus/light/illumination_object.h"

#include <iostream>

hal::illumination_t* p_illumination = nullptr;

namespace illumination_menu {

void print_failure(int status) {
    if (status != 0) {
        std::cout << "Communication Failure" << std::endl;
    }
}

void show_number(char const* label, int (hal::illumination_t::*get)(unsigned int&) const) {
    unsigned int number = 0;
    print_failure((p_illumination->*get)(number));
    std::cout << label << number << std::endl;
}

}  // namespace illumination_menu
