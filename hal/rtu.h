// The real-time unit: triggers, exposure timing, digital I/O pins, light bar and device state.
#pragma once

#include <bitset>

#include "hal/base.h"
#include "hal/dio_pin_config.h"
#include "hal/types.h"

namespace hal {

// All objects that open the same node drive one real-time unit: what one sets, another reads.
class rtu_t : public base_t {
public:
    rtu_t(char const* device, int access);
    ~rtu_t() override;

    int get_status(unsigned char& status) const override;
    int get_revision(revision_t& revision) const override;

    int set_imager_type(imx_te type);
    int get_imager_type(imx_te& type);

    // Time after a trigger in which the next one is not accepted, in microseconds.
    int set_trigger_prohibited_time(unsigned int time_us);
    int get_trigger_prohibited_time(unsigned int& time_us);
    // Time between the trigger and the start of the exposure, in microseconds.
    int set_exposure_offset(unsigned int offset_us);
    int get_exposure_offset(unsigned int& offset_us);
    // Exposure time in microseconds.
    int set_exposure(unsigned int exposure_us);
    int get_exposure(unsigned int& exposure_us) const;

    // Fires one trigger; true starts it, false does nothing.
    int single_shot(bool start);
    // True: the unit triggers by itself at the acquisition rate; false: only single shots.
    int set_trigger_mode(bool continuous);
    // Rate of the continuous trigger in frames per second.
    int set_aquisition_fps(unsigned int fps);

    // Whether the digital I/O is powered (24 V supply) or not (power over Ethernet).
    // -1 means failure; with any other status the flag is valid.
    int dio_available(bool& available) const;

    // Pins 0-5; another number is refused. The record is taken as a whole.
    int set_io_pin_config(unsigned char pin, dio_pin_config_t config);
    int get_io_pin_config(unsigned char pin, dio_pin_config_t& config);
    int set_pin_value(unsigned char pin, bool value);
    int get_pin_value(unsigned char pin, bool& value) const;
    // Bit i is pin i.
    int get_all_pin_values(std::bitset<6>& values) const;

    int set_lightbar_col(color_t color);
    int set_device_status(device_state_te state);
};

}  // namespace hal
