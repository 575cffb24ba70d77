// The sensor hub as every menu opens it.
#pragma once

#include "app/device_paths.h"
#include "hal/gyro.h"

inline hal::gyro_t open_hub(char const* firmware) {
    return hal::gyro_t(kHubDevice, kDeviceAccess, firmware, kHubInterrupt, 200);
}
