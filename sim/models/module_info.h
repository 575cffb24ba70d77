// What each module of the device tells about itself: status byte, revision and serial number.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "hal/types.h"
#include "sim/device/properties.h"

namespace sim {

enum class Module { rtu, illumination, autofocus, gyro, imx296, imx567 };
constexpr std::size_t kModules = 6;

class ModuleInfo {
public:
    ModuleInfo();

    int get_status(Module module, unsigned char& status) const;
    int get_revision(Module module, hal::revision_t& revision) const;
    int get_serial_number(Module module, unsigned int& serial_number) const;

    void describe(Properties& properties);

private:
    struct Info {
        std::string_view name;
        unsigned char status;
        hal::revision_t revision;
        unsigned int serial_number;
    };

    Info const& of(Module module) const { return modules_[static_cast<std::size_t>(module)]; }

    std::array<Info, kModules> modules_;
};

}  // namespace sim
