// The module information commands that most component menus share.
#include "app/module_information.h"

#include <cerrno>
#include <cstdio>
#include <iostream>

#include "app/exit_console.h"
#include "hal/illumination.h"
#include "hal/rtu.h"
#include "menus/imaging/sensor_classes.h"

namespace {

constexpr char const* kUsage =
    "\n\n\nPlease Enter the Option******\n"
    "\t 1. Get Status            \n"
    "\t 2. Get Revision          \n"
    "\t 3. Get Serial Number     \n"
    "\t 0. Exit                  \n\n\n";

// Both commands tell a failure with this one text.
void print_read_failure() {
    int const error = errno;
    std::cout << std::flush;
    errno = error;  // the library's, not that of an output which cannot be written
    std::perror("Failed read rev\n");
}

// The printed name of the module, by its dynamic type; modules not listed have none.
char const* driver_name(hal::base_t const* module) {
    if (dynamic_cast<hal::illumination_t const*>(module)) {
        return "The Illumination driver: \n";
    }
    if (dynamic_cast<hal::rtu_t const*>(module)) {
        return "The RTU driver: \n";
    }
    if (dynamic_cast<hal::imx296_t const*>(module)) {
        return "The IMX296 driver: \n";
    }
    if (dynamic_cast<hal::imx567_t const*>(module)) {
        return "The IMX567 driver: \n";
    }
    return "";
}

}  // namespace

void top_usage() {
    std::cout << kUsage;
}

int get_status(hal::base_t* module) {
    std::cout << "Status of the Module: \t";
    unsigned char status = 0;
    if (module->get_status(status) < 0) {
        print_read_failure();
    } else {
        std::cout << "Done!\n";
    }
    return 0;
}

int get_revision(hal::base_t* module) {
    std::cout << "Revision of the Module: \t";
    hal::revision_t revision{};
    if (module->get_revision(revision) < 0) {
        print_read_failure();
        return 0;
    }
    std::cout << driver_name(module);
    std::printf("\nMajor \t%d,\nMinor \t%d,\nWeek \t%d,\nYear \t%d,\nNum \t%d,\nPatch \t%d,\n", revision.major,
                revision.minor, revision.week, revision.year, revision.num, revision.patch);
    std::cout << " Done!\n";
    return 0;
}

int get_serial_number(hal::base_t*) {
    return -1;
}

bool run_module_option(char option, hal::base_t* module) {
    switch (option) {
        case '0':
            exit_console();
        case '1':
            get_status(module);
            return true;
        case '2':
            get_revision(module);
            return true;
        case '3':
            get_serial_number(module);
            return true;
        default:
            return false;
    }
}
