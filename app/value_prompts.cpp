// Shows or changes one named unsigned setting of a module.
#include "app/value_prompts.h"

#include <iostream>

#include "app/terminal_input.h"

void sensor_get(setting_accessor const& get, std::string const& name) {
    unsigned int value = 0;
    if (get(value) == 0) {
        std::cout << "sensor actual " << name << ": " << value << std::endl;
    } else {
        std::cout << "sensor error to get " << name << std::endl;
    }
}

void sensor_set(setting_accessor const& set, std::string const& name) {
    std::cout << "Enter a value for " << name << ": ";
    unsigned int value = 0;
    read_number(value);
    if (set(value) == 0) {
        std::cout << "sensor set  " << name << ": " << value << std::endl;
    } else {
        std::cout << "sensor error to set " << name << std::endl;
    }
}
