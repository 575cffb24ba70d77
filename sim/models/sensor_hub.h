// The motion sensor hub: its boot, its virtual sensors and the samples they make.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "hal/quaternion.h"
#include "sim/core/clock.h"
#include "sim/models/firmware_image.h"
#include "sim/models/orientation.h"

namespace sim {

// Operations answer 0, or -1 with errno set: EIO while no firmware runs, EINVAL for a value that is refused (the
// old one stays), ENOENT without an image, EBADMSG for an image that is none.
class SensorHub {
public:
    struct Sample {
        Time taken;
        std::uint8_t sensor_id;
        hal::cb_struct_te kind;
        hal::quaternion_s16_t quaternion;  // where the kind says so
    };

    struct ActiveSensor {
        unsigned int id;
        float rate;  // Hz
        unsigned int latency_ms;
    };

    // Leaves the hub in its boot loader, all sensors off.
    void reset();
    // Resets the hub and starts it with the bytes of an image file. Where there is none, or they
    // are no image, the hub stays in its boot loader.
    int boot(std::optional<std::string> const& image);
    // As boot, but a running hub stays as it is where the bytes are no image.
    int upload(std::optional<std::string> const& image);
    // How long the upload of an image takes.
    Duration upload_time() const { return std::chrono::milliseconds(upload_time_ms_); }
    static constexpr unsigned int kLongestUpload = 60000;  // ms
    unsigned int upload_time_ms() const { return upload_time_ms_; }
    int set_upload_time(unsigned int ms);
    bool running() const { return image_.has_value(); }
    // Of the firmware that runs; 0 where none does.
    std::uint16_t firmware_version() const { return image_ ? image_->version : std::uint16_t{0}; }

    // The host's data callbacks; what is registered stays over a boot.
    int install_callbacks();
    bool callbacks_installed() const { return callbacks_installed_; }

    // `rate` 0, or 1 Hz (a sensor's own least where that is more) to the sensor's greatest. Its first sample
    // comes one period from now.
    int activate(unsigned int id, float rate, unsigned int latency_ms, Time now);

    // The sensors that are on, in the order of their ids.
    std::vector<ActiveSensor> active_sensors() const;
    // Delivered since the start.
    unsigned long samples() const { return samples_; }

    // When samples are to be delivered next, if any sensor is on.
    std::optional<Time> next_delivery() const;
    // The samples to be delivered up to now, each once, in the order of their delivery.
    std::vector<Sample> take_samples(Time now);

    // Tilts the device; samples due before are of the old orientation. False where an angle is out of range.
    bool tilt(Angles const& target, Time now, Duration over);
    Orientation const& orientation() const { return orientation_; }
    // Of its measurement, as Orientation has it.
    int set_noise(double degrees);
    void set_seed(std::uint64_t seed) { orientation_.set_seed(seed); }
    // The present orientation as sensor `id` measures it; -1 while that sensor is off.
    int measure(unsigned int id, Time now, hal::quaternion_s16_t& sample) const;

    // Reports; those of a sensor that is not there say so and answer -1.
    int report_firmware(std::string& report) const;
    int report_virtual_sensors(std::string& report) const;
    int report_physical_sensors(std::string& report) const;
    int report_virtual_sensor(long long id, std::string& report) const;
    int report_configuration(long long id, std::string& report) const;
    int report_physical_sensor(long long id, std::string& report) const;
    // Reading the interrupt status clears it.
    int report_interrupt(std::string& report);
    int report_interrupt_control(std::string& report) const;

private:
    struct Activity {
        float rate;  // Hz
        unsigned int latency_ms;
        Time start;
        std::uint64_t taken = 0;     // samples so far
        std::deque<Sample> pending;  // taken, to be delivered together
        Time sample_time(std::uint64_t number) const;
        Time delivery_time() const;
    };

    void advance(Time now);
    std::uint8_t boot_status() const;

    Orientation orientation_;
    std::optional<FirmwareImage> image_;  // the one that runs
    bool verify_error_ = false;
    bool reset_seen_ = false;  // the interrupt of the last reset has been read
    bool callbacks_installed_ = false;
    std::map<unsigned int, Activity> active_;
    unsigned int upload_time_ms_ = 200;
    unsigned long samples_ = 0;
};

}  // namespace sim
