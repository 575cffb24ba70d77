// The motion sensor hub with its virtual and physical sensors.
#pragma once

#include <functional>

#include "hal/base.h"
#include "hal/quaternion.h"

namespace hal {

// Callbacks run on a thread of the library, never two of one object at once. Delegates receive samples from
// their construction on; the callback records and the alarms, whose functions are set after construction, are
// served from the first irq_callback_hold(false) on, so that what was set before it is safely seen.
class gyro_t : public base_t {
public:
    struct callback_record {
        unsigned char sensor_id = 0;  // virtual sensor
        std::function<void(unsigned char, cb_struct_te, void*)> function;
    };

    // `device`: the I2C bus; `firmware`: the image that boot() loads; `irq_value`: the file that shows the
    // hub's interrupt line. `irq_timeout` is handed to the library; the console always passes 200.
    gyro_t(char const* device, int access, char const* firmware, char const* irq_value, unsigned short irq_timeout);
    ~gyro_t() override;

    int get_status(unsigned char& status) const override;
    int get_revision(revision_t& revision) const override;

    // Resets the hub, uploads the firmware of the constructor and starts it. Blocks until the hub runs.
    int boot();
    // Uploads another image.
    int upload_firmware(char const* path);
    // Registers the library's data callbacks with the hub.
    int install_callbacks();
    // Delivers samples of virtual sensor `id`, `rate` a second (Hz), each at most `latency_ms` late.
    // A rate of 0 switches the sensor off.
    int activate_vsensor(unsigned int id, float rate, unsigned int latency_ms);
    // True holds the delivery of samples, false releases it. With true it returns only when no callback
    // is running, unless it is called from one.
    int irq_callback_hold(bool hold);

    // Reports, printed on standard output.
    int info_firmware();
    int info_vsensor_list();
    int info_psensor_list();
    int info_vsensor(int id);
    int info_vsensor_cfg(int id);
    int info_psensor(int id);
    int info_irq();
    int info_irq_ctrl();

    // Writes yaw, pitch and roll, in this order, to `ypr`: in degrees, or in radians where `degrees` is false.
    static int quaternion_2_yaw_pitch_roll(quaternion_float_t const& quaternion, float* ypr, bool degrees);

    // Called with every sample of their sensor. To be set while the callbacks are held.
    callback_record callback_records[2];
};

}  // namespace hal
