// The motion sensor hub: its boot, its virtual sensors and the samples they make.
#pragma once

#include <array>
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
#include "sim/models/sensor_catalogue.h"

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
        double rate;  // Hz, in force
        unsigned int latency_ms;
    };

    // Leaves the hub in its boot loader, all sensors off.
    void reset();
    // Resets the hub and starts it with the bytes of an image file. Where there is none, or they
    // are no image, the hub stays in its boot loader.
    int boot(std::optional<std::string> const& image);
    // As boot, but a running hub stays as it is where the bytes do not even begin as an image does.
    int upload(std::optional<std::string> const& image);
    // Whether images come to the hub with a wrong bit; by control, from the next one on.
    bool damages_images() const { return damages_images_; }
    void set_damages_images(bool damages) { damages_images_ = damages; }
    // How long the upload of an image takes.
    Duration upload_time() const { return std::chrono::milliseconds(upload_time_ms_); }
    static constexpr unsigned int kLongestUpload = 60000;  // ms
    unsigned int upload_time_ms() const { return upload_time_ms_; }
    int set_upload_time(unsigned int ms);
    bool running() const { return image_.has_value(); }
    // Of the firmware that runs; 0 where none does.
    std::uint16_t firmware_version() const { return image_ ? image_->version : std::uint16_t{0}; }

    // The data callbacks of one more of the host's objects; what is registered stays over a boot, until it is removed.
    int install_callbacks();
    void remove_callbacks() { --callback_users_; }
    bool callbacks_installed() const { return callback_users_ > 0; }

    // `rate` 0, or up to the sensor's greatest, which becomes the next that the sensor has. Its first sample comes one
    // period from now; a sensor of events looks once a period whether it has something to tell.
    int activate(unsigned int id, float rate, unsigned int latency_ms, Time now);

    // The sensors that are on, in the order of their ids.
    std::vector<ActiveSensor> active_sensors() const;
    // Delivered since the start.
    unsigned long samples() const { return samples_; }

    // When samples are to be delivered next, if any sensor is on.
    std::optional<Time> next_delivery() const;
    // The samples to be delivered up to now, each once, in the order of their delivery. The interrupt tells of them
    // until the host has read it.
    std::vector<Sample> take_samples(Time now);
    // The same where nobody wants them, in far less time.
    void pass_samples(Time now);
    void read_interrupt() {
        fifos_told_ = 0;
        told_ = {};
    }

    // Tilts the device; samples due before are of the old orientation. False where an angle is out of range.
    bool tilt(Angles const& target, Time now, Duration over);
    Orientation const& orientation() const { return orientation_; }
    // Of its measurement, as Orientation has it.
    int set_noise(double degrees);
    int set_drift(double degrees_a_minute);
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
    // What a sensor of events has seen.
    struct Watch {
        Rotation reference;  // where the device lay at the last event, or began to lie still
        Edge edge;
        Time still_since;
        bool rests = false;
    };

    struct Activity {
        double rate;  // Hz
        Duration period;
        unsigned int latency_ms;
        Time start;
        Watch watch;
        std::uint64_t taken;         // periods so far
        std::deque<Sample> pending;  // taken, to be delivered together
        Time sample_time(std::uint64_t number) const;
        Time full_time() const;
        Time delivery_time() const;
        // Of those that follow so many, where each period brings one.
        Time delivery_time(std::uint64_t delivered) const;
        // How many have been delivered, and how many are due until a time, where each period brings one.
        std::uint64_t delivered() const { return taken - pending.size(); }
        std::uint64_t due_until(Time time) const;
        // Whether the latency of each sample is over before the next.
        bool delivers_singly() const;
        // Counts the samples up to this number as delivered.
        void pass(std::uint64_t number);
    };

    void advance(Time now);
    bool reports(VirtualSensor const& sensor, Watch& watch, Time now) const;
    void tell_of_fifo(unsigned int id, Activity const& activity, bool full, Time time);
    hal::quaternion_s16_t measure(Time now) const;
    bool integrates() const;
    std::uint8_t boot_status() const;

    Orientation orientation_;
    std::optional<FirmwareImage> image_;  // the one that runs
    bool verify_error_ = false;
    bool reset_seen_ = false;      // the interrupt of the last reset has been read
    unsigned int fifos_told_ = 0;  // bits of the interrupt status
    std::array<Time, 2> told_{};   // when last of the non-wake-up FIFO, and of the wake-up FIFO
    unsigned int callback_users_ = 0;
    bool damages_images_ = false;
    std::map<unsigned int, Activity> active_;
    Time integrates_since_{};            // where an orientation sensor is on
    unsigned int upload_time_ms_ = 200;  // ours, for haste: a real image takes some 2 s on its bus
    unsigned long samples_ = 0;
};

}  // namespace sim
