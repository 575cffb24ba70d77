// The console's two image sensors, told apart by their class.
#pragma once

#include "app/device_paths.h"
#include "hal/imx.h"

namespace hal {

class imx296_t : public imx_t {
public:
    imx296_t() : imx_t(kImx296Device, kDeviceAccess) { sensor_type_ = imx_te::imx296; }
    ~imx296_t() override = default;
};

class imx567_t : public imx_t {
public:
    imx567_t() : imx_t(kImx567Device, kDeviceAccess) { sensor_type_ = imx_te::imx567; }
    ~imx567_t() override = default;
};

}  // namespace hal
