// The real-time unit: triggers, exposure timing, digital I/O, power source and light bar.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <set>

#include "hal/types.h"
#include "sim/core/clock.h"
#include "sim/models/digital_io.h"
#include "sim/models/exposure_signal.h"
#include "sim/models/image_sensor.h"
#include "sim/models/supply.h"

namespace sim {

// A trigger makes the fitted sensor take a frame, which counts at once, and is followed by an exposure. It is missed
// when it comes within the prohibited time after the last accepted one, when its exposure would overlap another or come
// faster than the sensor's full-frame rate, or when both would have to wait for their beginning: one exposure waits at
// most. Settings count for later triggers; an exposure that is accepted stays as it is. Without a sensor the unit times
// its exposures all the same, and nobody takes a frame.
//
// Setters refuse (-1, EINVAL) what is out of range and keep the old value.
class RealTimeUnit {
public:
    // Both within the limits of every imager, and no exposure reaches into the next.
    static constexpr unsigned int kExposureAtStart = 10'000;  // us
    static constexpr unsigned int kRateAtStart = 10;          // frames per second

    // Carries out everything that falls due until `now`; to be called before any other operation. `fitted` is the
    // sensor that is there, or null; where it is another than before, that one's exposure has ended with it.
    void advance(Time now, ImageSensor* fitted);

    // Forgets all but what comes from outside: the supply, the levels on the wires, and triggers that are on their way.
    // Until it gains power again it takes no trigger.
    void lose_power();
    void gain_power() { powered_ = true; }

    // A rate or an exposure beyond the limits of the new type becomes the limit.
    int set_imager_type(hal::imx_te type);
    int get_imager_type(hal::imx_te& type) const;
    hal::imx_te imager_type() const { return imager_type_; }
    // Of rate and exposure, by that type.
    ExposureLimits const& limits() const;
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

    // What the light has of the exposures: those that come at equal distances at their rate, one that comes alone
    // spread over the time until another could come. `follower` is told when the signal changes: what it was until
    // then.
    using SignalFollower = std::function<void(Time until, ExposureSignal const& signal)>;
    void follow_signal(SignalFollower follower) { follower_ = std::move(follower); }
    ExposureSignal const& exposure_signal() const { return signal_; }

    int single_shot(bool start);
    // The first trigger comes one period after the mode or the rate was set.
    int set_continuous(bool continuous);
    bool continuous() const { return continuous_; }
    bool exposing() const { return exposing_until_.has_value(); }
    // Frames per second. The limits are those of the imager type that is set.
    int set_rate(unsigned int fps);
    unsigned int rate() const { return fps_; }
    // As set_rate and set_exposure, with the limits of a sensor.
    int set_rate(unsigned int fps, ExposureLimits const& limits);
    int set_exposure(unsigned int exposure_us, ExposureLimits const& limits);

    // Since the start, from everywhere.
    unsigned long triggers() const { return triggers_; }
    int get_missed_triggers(unsigned long& frame_id, long& missed) const;
    long missed_triggers() const { return missed_; }
    // The frame that was running when the last one was missed.
    unsigned long missed_frame() const { return missed_frame_id_; }
    int reset_missed_triggers();
    // Whether a camera takes over the sensor's frames, each of them by a number of its own.
    int set_acquiring(unsigned int camera, bool acquiring);
    bool acquiring() const { return !acquiring_cameras_.empty(); }
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
    // Nothing: nobody drives the wire any more.
    void drive_pin(unsigned char pin, std::optional<bool> high);
    // Triggers from outside: `count` of them, the first now, `rate` (above 0) in a second; all at once without a rate.
    void trigger_from_outside(unsigned int count, std::optional<unsigned int> rate);
    // None of those that are still to come.
    void end_triggers_from_outside() { outside_triggers_.clear(); }

private:
    // Triggers at equal distances.
    struct Train {
        Time start;
        unsigned int rate;  // a second
        std::int64_t sent;  // the next one comes so many periods after the start

        Time due() const { return at(sent); }
        Time at(std::int64_t number) const;
        // How many are still to come before `end`.
        std::int64_t due_before(Time end) const;
        // Number of the first at that time or later, of those that are still to come.
        std::int64_t first_from(Time time) const;
    };
    struct OutsideTrain {
        Train train;
        unsigned int left;
    };
    struct Exposure {
        Time start;
        Time end;
        Time ready;             // from which on the next one may begin
        ExposureSignal signal;  // and what the light has of it
        Time signal_end;
    };

    // Looks on the way for what repeats.
    class Repetition;

    std::optional<Time> next_event() const;
    void run_event(Time due);
    void pass_missed_triggers(Time until);
    bool repeats(RealTimeUnit const& earlier) const;
    unsigned long accepted_since(RealTimeUnit const& earlier) const;
    void repeat_since(RealTimeUnit const& earlier, std::int64_t times);
    void restart_own_triggers();
    // `train` is the one that the trigger belongs to and that goes on after it; null for one that comes alone.
    void trigger(Time now, Train const* train = nullptr);
    void trigger(unsigned int count, Time now);
    Exposure exposure_after(Time trigger, Train const* train) const;
    // Whatever waits, a trigger before that is missed.
    Time accepts_from() const;
    void miss(std::int64_t triggers);
    bool accepts(Time trigger, Exposure const& exposure) const;
    void begin(Exposure const& exposure);
    void end_exposure(Time now);
    void exchange_sensor(ImageSensor* fitted);
    void set_signal(ExposureSignal const& signal, std::optional<Time> end, Time now);

    Time now_{0};
    bool powered_ = true;
    ImageSensor* sensor_ = nullptr;

    hal::imx_te imager_type_ = hal::imx_te::none;
    unsigned int prohibited_time_us_ = 0;
    unsigned int exposure_offset_us_ = 0;
    unsigned int exposure_us_ = kExposureAtStart;
    unsigned int fps_ = kRateAtStart;
    bool continuous_ = false;

    Train own_triggers_{};  // while continuous
    std::deque<OutsideTrain> outside_triggers_;
    std::optional<Exposure> waiting_;     // for its beginning
    std::optional<Time> exposing_until_;  // while one lasts
    Time ready_{0};                       // for the next one, after those that have begun
    std::optional<Time> last_accepted_;
    ExposureSignal signal_{};
    unsigned long signal_changes_ = 0;
    std::optional<Time> signal_end_;  // where there is a signal
    SignalFollower follower_;

    unsigned long triggers_ = 0;
    long missed_ = 0;
    unsigned long missed_frame_id_ = 0;
    std::set<unsigned int> acquiring_cameras_;
    unsigned long acquired_ = 0;

    DigitalIo pins_;
    hal::color_t light_bar_{0, 0, 0, 0};
};

}  // namespace sim
