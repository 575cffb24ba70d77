// What each module of the device tells about itself: status byte, revision and serial number.
#pragma once

#include <array>
#include <cstddef>

#include "hal/types.h"

namespace sim {

enum class Module { rtu, illumination, autofocus, gyro, imx296, imx567 };
constexpr std::size_t kModules = 6;

class ModuleInfo {
public:
    struct Info {
        unsigned char status;  // bits of the module's own; 0: no fault
        hal::revision_t revision;
        unsigned int serial_number;  // decimal digits that tell where it comes from
    };

    ModuleInfo();

    int get_status(Module module, unsigned char& status) const;
    int get_revision(Module module, hal::revision_t& revision) const;
    int get_serial_number(Module module, unsigned int& serial_number) const;

    // Every figure takes every value.
    Info& of(Module module) { return modules_[static_cast<std::size_t>(module)]; }
    Info const& of(Module module) const { return modules_[static_cast<std::size_t>(module)]; }

private:
    std::array<Info, kModules> modules_;
};

}  // namespace sim
