// Tells the two hardware variants apart.
#include "app/device_type.h"

#include <fstream>
#include <iostream>

int determine_device_type() {
    std::ifstream const autofocus("/dev/r47-autofocus-driver");
    std::ifstream const illumination("/dev/r47-illumination-driver");
    std::ifstream const rtu("/dev/r47-rtu-driver");
    if (!autofocus && !illumination && !rtu) {
        return 1;
    }
    std::cout << "Detected device R47";  // kept without a line end
    return 0;
}

int get_button_irq_line() {
    return determine_device_type() == 0 ? 82 : 44;
}
