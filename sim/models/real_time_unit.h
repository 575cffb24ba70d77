// The real-time unit: triggers, exposure timing, digital I/O, power source and light bar.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "hal/types.h"
#include "sim/core/clock.h"
#include "sim/models/digital_io.h"
#include "sim/models/image_sensor.h"
#include "sim/models/supply.h"

namespace sim {

// A trigger makes the fitted sensor take a frame, which counts at once. It is missed when it comes within the
// prohibited time after the last accepted one, when its exposure would begin before that one's has ended, or faster
// than the sensor's full-frame rate. Without a sensor triggers do nothing.
//
// Setters refuse (-1, EINVAL) what is out of range and keep the old value.
class RealTimeUnit {
public:
    // Carries out everything that falls due until `now`; to be called before any other operation. `fitted` is the
    // sensor that is there, or null.
    void advance(Time now, ImageSensor* fitted);

    int set_imager_type(hal::imx_te type);
    int get_imager_type(hal::imx_te& type) const;
    hal::imx_te imager_type() const { return imager_type_; }
    int set_prohibited_time(unsigned int time_us);
    int get_prohibited_time(unsigned int& time_us) const;
    unsigned int prohibited_time() const { return prohibited_time_us_; }
    int set_exposure_offset(unsigned int offset_us);
    int get_exposure_offset(unsigned int& offset_us) const;
    unsigned int exposure_offset() const { return exposure_offset_us_; }
    // The limits are those of the imager type that is set.
    int set_exposure(unsigned int exposure_us);
    int get_exposure(unsigned int& exposure_us) const;
    unsigned int exposure() const { return exposure_us_; }

    int single_shot(bool start);
    // The first trigger comes one period after the mode or the rate was set.
    int set_continuous(bool continuous);
    bool continuous() const { return continuous_; }
    bool exposing() const { return pins_.exposing(); }
    // Frames per second. The limits are those of the imager type that is set.
    int set_rate(unsigned int fps);
    unsigned int rate() const { return fps_; }
    // As set_rate and set_exposure, with the limits of a sensor.
    int set_rate(unsigned int fps, SensorFacts const& limits);
    int set_exposure(unsigned int exposure_us, SensorFacts const& limits);

    // Since the start, from everywhere.
    unsigned long triggers() const { return triggers_; }
    int get_missed_triggers(unsigned long& frame_id, long& missed) const;
    long missed_triggers() const { return missed_; }
    // The frame that was running when the last one was missed.
    unsigned long missed_frame() const { return missed_frame_id_; }
    int reset_missed_triggers();
    // Whether the camera takes over the sensor's frames.
    int set_acquiring(bool acquiring);
    bool acquiring() const { return acquiring_; }
    // Frames taken over since the start.
    unsigned long acquired() const { return acquired_; }

    int dio_available(bool& available) const;
    int set_pin_config(unsigned char pin, hal::dio_pin_config_t const& config);
    int get_pin_config(unsigned char pin, hal::dio_pin_config_t& config) const;
    int set_pin_value(unsigned char pin, bool value);
    int get_pin_value(unsigned char pin, bool& value) const;
    int get_pin_values(std::bitset<DigitalIo::kPins>& values) const;
    DigitalIo const& pins() const { return pins_; }

    int set_light_bar(hal::color_t color);
    hal::color_t light_bar() const { return light_bar_; }

    // What the outside does. `pin` is one of the six.
    void set_supply(Supply supply);
    Supply supply() const { return pins_.powered() ? Supply::dc_24v : Supply::poe; }
    void drive_pin(unsigned char pin, bool high);
    // Triggers from outside: `count` of them, the first now, `rate` (above 0) in a second; all at once without a rate.
    void trigger_from_outside(unsigned int count, std::optional<unsigned int> rate);

private:
    // Triggers at equal distances.
    struct Train {
        Time start;
        unsigned int rate;  // a second
        std::int64_t sent;  // the next one comes so many periods after the start

        Time due() const;
    };
    struct OutsideTrain {
        Train train;
        unsigned int left;
    };
    struct ExposureEdge {
        Time due;
        bool exposing;
    };

    std::optional<Time> next_event() const;
    void run_event(Time due);
    void restart_own_triggers();
    void trigger(Time now);
    void trigger(unsigned int count, Time now);
    Time exposure_start(Time trigger) const;
    bool accepts_trigger(Time now) const;

    Time now_{0};
    ImageSensor* sensor_ = nullptr;

    hal::imx_te imager_type_ = hal::imx_te::none;
    unsigned int prohibited_time_us_ = 0;
    unsigned int exposure_offset_us_ = 0;
    unsigned int exposure_us_ = 10'000;
    unsigned int fps_ = 10;
    bool continuous_ = false;

    Train own_triggers_{};  // while continuous
    std::deque<OutsideTrain> outside_triggers_;
    std::deque<ExposureEdge> exposure_edges_;  // in the order of their time, as no exposure begins in another
    std::optional<Time> last_accepted_;
    Time sensor_ready_{0};  // for the next exposure

    unsigned long triggers_ = 0;
    long missed_ = 0;
    unsigned long missed_frame_id_ = 0;
    bool acquiring_ = false;
    unsigned long acquired_ = 0;

    DigitalIo pins_;
    hal::color_t light_bar_{0, 0, 0, 0};
};

}  // namespace sim
