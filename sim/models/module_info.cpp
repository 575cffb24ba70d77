// What each module of the device tells about itself: status byte, revision and serial number.
#include "sim/models/module_info.h"

#include <string>

namespace sim {

// In the order of Module. Revisions: major, minor, patch, num, year, week.
ModuleInfo::ModuleInfo()
    : modules_{{
          {"rtu", 0, {1, 6, 0, 2, 22, 14}, 220014},
          {"illumination", 0, {2, 3, 1, 1, 22, 9}, 220109},
          {"autofocus", 0, {1, 2, 0, 4, 21, 47}, 214702},
          {"gyro", 0, {1, 0, 3, 1, 22, 11}, 221103},
          {"imx296", 0, {1, 4, 0, 1, 22, 6}, 296001},
          {"imx567", 0, {1, 1, 0, 3, 22, 20}, 567001},
      }} {}

int ModuleInfo::get_status(Module module, unsigned char& status) const {
    status = of(module).status;
    return 0;
}

int ModuleInfo::get_revision(Module module, hal::revision_t& revision) const {
    revision = of(module).revision;
    return 0;
}

int ModuleInfo::get_serial_number(Module module, unsigned int& serial_number) const {
    serial_number = of(module).serial_number;
    return 0;
}

void ModuleInfo::describe(Properties& properties) {
    for (Info& info : modules_) {
        std::string const name(info.name);
        std::string const revision = name + ".revision.";
        properties.add_variable(name + ".status", "status byte of the module", info.status);
        properties.add_variable(revision + "major", "revision, major number", info.revision.major);
        properties.add_variable(revision + "minor", "revision, minor number", info.revision.minor);
        properties.add_variable(revision + "patch", "revision, patch level", info.revision.patch);
        properties.add_variable(revision + "num", "revision, build of that week", info.revision.num);
        properties.add_variable(revision + "year", "revision, year in two digits", info.revision.year);
        properties.add_variable(revision + "week", "revision, calendar week", info.revision.week);
        properties.add_variable(name + ".serial_number", "serial number of the module", info.serial_number);
    }
}

}  // namespace sim
