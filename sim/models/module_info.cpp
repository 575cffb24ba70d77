// What each module of the device tells about itself: status byte, revision and serial number.
#include "sim/models/module_info.h"

namespace sim {

namespace {

// Bits of faults that the module knows; what they mean is its driver's. None is set, as nothing is wrong.
constexpr unsigned char kSound = 0;

// A board has the week of its making in its serial number: year, week, count of that week.
constexpr unsigned int board(hal::revision_t const& revision, unsigned int count) {
    return (revision.year * 100U + revision.week) * 100U + count;
}

// An image sensor has its type there, before its count.
constexpr unsigned int sensor(unsigned int type, unsigned int count) {
    return type * 1000U + count;
}

// Major, minor, patch, build of the week, year, week. These are ours: the first generation of each module (of the
// illumination the second, which has colours), from the half year in which such a device would have been put together.
// No two modules have the same, so that one which is taken for another shows.
constexpr hal::revision_t kRtu{1, 6, 0, 2, 22, 14};
constexpr hal::revision_t kIllumination{2, 3, 1, 1, 22, 9};
constexpr hal::revision_t kAutofocus{1, 2, 0, 4, 21, 47};
constexpr hal::revision_t kGyro{1, 0, 3, 1, 22, 11};
constexpr hal::revision_t kImx296{1, 4, 0, 1, 22, 6};
constexpr hal::revision_t kImx567{1, 1, 0, 3, 22, 20};

// The device is the first of its kind.
constexpr unsigned int kFirst = 1;

}  // namespace

// In the order of Module.
ModuleInfo::ModuleInfo()
    : modules_{{
          {kSound, kRtu, board(kRtu, kFirst)},
          {kSound, kIllumination, board(kIllumination, kFirst)},
          {kSound, kAutofocus, board(kAutofocus, kFirst)},
          {kSound, kGyro, board(kGyro, kFirst)},
          {kSound, kImx296, sensor(296, kFirst)},
          {kSound, kImx567, sensor(567, kFirst)},
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
