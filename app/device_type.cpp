// Tells the two hardware variants apart.
#include "app/device_type.h"

#include <fstream>
#include <iostream>

#include "app/device_paths.h"

int determine_device_type() {
    std::ifstream const autofocus(kAutofocusDevice);
    std::ifstream const illumination(kIlluminationDevice);
    std::ifstream const rtu(kRtuDevice);
    if (!autofocus && !illumination && !rtu) {
        return 1;
    }
    std::cout << "Detected device R47";  // kept without a line end
    return 0;
}

int get_button_irq_line() {
    return determine_device_type() == 0 ? 82 : 44;
}
