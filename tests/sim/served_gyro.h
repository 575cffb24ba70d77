// A sensor hub that runs, and a gyro_t on it, for tests of the library's callbacks.
#pragma once

#include "hal/gyro.h"
#include "sim/models/firmware_image.h"
#include "tests/sim/served_device.h"

class ServedGyroTest : public ServedDeviceTest {
protected:
    ServedGyroTest() {
        device_.access()->hub.boot(sim::make_firmware_image({sim::HubVariant::bhi260ap, 1}));
        EXPECT_EQ(gyro_->install_callbacks(), 0);
    }

    // Switches a sensor on, whose samples then come within 1 ms.
    void activate(unsigned int id, float rate) {
        auto const device = device_.access();
        EXPECT_EQ(device->hub.activate(id, rate, 1, device.now()), 0);
    }
    static std::unique_ptr<hal::gyro_t> make_gyro() {
        return std::make_unique<hal::gyro_t>("/dev/i2c-2", 2, nullptr, "/sys/class/gpio/gpio481/value",
                                             static_cast<unsigned short>(200));
    }

    std::unique_ptr<hal::gyro_t> gyro_ = make_gyro();
};
