// What each module of the device tells about itself: status byte, revision and serial number.
#include "sim/models/module_info.h"

namespace sim {

// In the order of Module. Revisions: major, minor, patch, num, year, week.
ModuleInfo::ModuleInfo()
    : modules_{{
          {0, {1, 6, 0, 2, 22, 14}, 220014},
          {0, {2, 3, 1, 1, 22, 9}, 220109},
          {0, {1, 2, 0, 4, 21, 47}, 214702},
          {0, {1, 0, 3, 1, 22, 11}, 221103},
          {0, {1, 4, 0, 1, 22, 6}, 296001},
          {0, {1, 1, 0, 3, 22, 20}, 567001},
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

}  // namespace sim
