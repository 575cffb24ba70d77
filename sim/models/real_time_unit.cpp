// The real-time unit: triggers, exposure timing, digital I/O, power source and light bar.
#include "sim/models/real_time_unit.h"

#include <algorithm>

#include "sim/models/refusal.h"

namespace sim {

namespace {

constexpr std::int64_t kSecond = 1'000'000;    // us
constexpr unsigned int kFullBrightness = 100;  // percent, of the light bar

// What the unit does without an imager: as short and as long as any sensor exposes, and as fast as its generator, whose
// pulse takes a millisecond.
constexpr ExposureLimits kNoImager{1, 100'000'000, 1000};

// An exposure that comes alone is spread over so long at least, that the light's longest flash has its place in it.
constexpr Duration kAlone = std::chrono::milliseconds(10);
constexpr ExposureSignal kDark{0.0, 0};

ExposureLimits const& limits_of(SensorFacts const* sensor) {
    return sensor != nullptr ? sensor->exposures : kNoImager;
}

Duration frame_period(ExposureLimits const& limits) {
    return Duration(kSecond / limits.max_fps);
}

void keep_earlier(std::optional<Time>& next, std::optional<Time> due) {
    if (due && (!next || *due < *next)) {
        next = due;
    }
}

}  // namespace

Time RealTimeUnit::Train::at(std::int64_t number) const {
    return start + Duration(number * kSecond / rate);
}

std::int64_t RealTimeUnit::Train::due_before(Time end) const {
    return first_from(std::max(start, end)) - sent;
}

std::int64_t RealTimeUnit::Train::first_from(Time time) const {
    std::int64_t const first = ((time - start).count() * rate + kSecond - 1) / kSecond;  // rounded up
    return std::max(sent, first);
}

// Exposures come in a pattern that soon repeats. Each accepted trigger is compared with one before it, which is a later
// one from time to time; where all is the same again, as many periods as there is time for pass at once.
class RealTimeUnit::Repetition {
public:
    Repetition(RealTimeUnit& unit, Time until) : unit_(unit), until_(until) {}

    void look_after_event(Time at) {
        bool const accepted = unit_.last_accepted_ == at && unit_.continuous_ && unit_.outside_triggers_.empty();
        if (over_ || !accepted) {
            return;
        }
        if (earlier_ && unit_.repeats(*earlier_)) {
            unit_.repeat_since(*earlier_, (until_ - at) / (at - *earlier_->last_accepted_));
            over_ = true;
        } else if (!earlier_ || unit_.accepted_since(*earlier_) == distance_) {
            distance_ *= 2;
            earlier_ = unit_;
        }
    }

private:
    RealTimeUnit& unit_;
    Time const until_;
    bool over_ = false;
    std::optional<RealTimeUnit> earlier_;  // after an accepted trigger
    unsigned long distance_ = 1;           // in accepted triggers, to the next that is compared with
};

void RealTimeUnit::advance(Time now, ImageSensor* fitted) {
    if (fitted != sensor_) {
        exchange_sensor(fitted);
    }
    Repetition repetition(*this, now);
    for (auto due = next_event(); due && *due <= now; due = next_event()) {
        run_event(*due);
        repetition.look_after_event(*due);
        pass_missed_triggers(now);
    }
    now_ = now;
}

// Both stand at a trigger that has just been accepted, with triggers of their own alone. The settings are the same.
bool RealTimeUnit::repeats(RealTimeUnit const& earlier) const {
    Duration const period = *last_accepted_ - *earlier.last_accepted_;
    std::int64_t const sent = own_triggers_.sent - earlier.own_triggers_.sent;
    auto const is_same = [period](std::optional<Time> const& now, std::optional<Time> const& then) {
        return now.has_value() == then.has_value() && (!now || *now == *then + period);
    };
    auto const start_of = [](std::optional<Exposure> const& exposure) {
        return exposure ? std::optional<Time>(exposure->start) : std::nullopt;
    };
    return period > Duration(0) && sent * kSecond == period.count() * own_triggers_.rate &&
           is_same(start_of(waiting_), start_of(earlier.waiting_)) &&
           is_same(exposing_until_, earlier.exposing_until_) && is_same(ready_, earlier.ready_) &&
           is_same(signal_end_, earlier.signal_end_) && signal_changes_ == earlier.signal_changes_ &&
           pins_.repeats(earlier.pins_, period);
}

// While the misses are not reset.
unsigned long RealTimeUnit::accepted_since(RealTimeUnit const& earlier) const {
    return triggers_ - earlier.triggers_ - static_cast<unsigned long>(missed_ - earlier.missed_);
}

// What happened since `earlier` happens so many times more.
void RealTimeUnit::repeat_since(RealTimeUnit const& earlier, std::int64_t times) {
    Duration const length = times * (*last_accepted_ - *earlier.last_accepted_);
    auto const count = static_cast<unsigned long>(times);
    unsigned long const frames = sensor_ != nullptr ? count * accepted_since(earlier) : 0;
    own_triggers_.sent += times * (own_triggers_.sent - earlier.own_triggers_.sent);
    if (waiting_) {
        waiting_ = {waiting_->start + length, waiting_->end + length, waiting_->ready + length, waiting_->signal,
                    waiting_->signal_end + length};
    }
    for (std::optional<Time>* const due : {&exposing_until_, &signal_end_, &last_accepted_}) {
        if (*due) {
            **due += length;
        }
    }
    ready_ += length;
    pins_.postpone(length);
    if (sensor_ != nullptr) {
        sensor_->take_frames(frames);
    }
    triggers_ += count * (triggers_ - earlier.triggers_);
    acquired_ += count * (acquired_ - earlier.acquired_);
    missed_frame_id_ += missed_ != earlier.missed_ ? frames : 0;
    missed_ += times * (missed_ - earlier.missed_);
}

void RealTimeUnit::lose_power() {
    set_signal(kDark, std::nullopt, now_);
    RealTimeUnit fresh;
    fresh.follower_ = follower_;
    fresh.now_ = now_;
    fresh.powered_ = false;
    fresh.outside_triggers_ = outside_triggers_;
    fresh.pins_ = pins_;
    fresh.pins_.lose_power();
    *this = fresh;
}

std::optional<Time> RealTimeUnit::next_event() const {
    std::optional<Time> next = pins_.next_change();
    if (continuous_ && powered_) {
        keep_earlier(next, own_triggers_.due());
    }
    for (OutsideTrain const& outside : outside_triggers_) {
        keep_earlier(next, outside.train.due());
    }
    keep_earlier(next, exposing_until_);
    if (waiting_) {
        keep_earlier(next, waiting_->start);
    }
    keep_earlier(next, signal_end_);
    return next;
}

// One event of those that are due: an exposure's end before the next one's beginning, and both before a trigger, which
// would be missed otherwise, or else begin its exposure first. The signal's end comes last: an exposure that begins
// then goes on with it.
void RealTimeUnit::run_event(Time due) {
    if (exposing_until_ == due) {
        end_exposure(due);
        return;
    }
    if (waiting_ && waiting_->start == due) {
        begin(*waiting_);
        waiting_.reset();
        return;
    }
    if (pins_.next_change() == due) {
        trigger(pins_.change(), due);
        return;
    }
    if (continuous_ && own_triggers_.due() == due) {
        ++own_triggers_.sent;
        trigger(due, &own_triggers_);
        return;
    }
    auto const outside = std::find_if(outside_triggers_.begin(), outside_triggers_.end(),
                                      [due](OutsideTrain const& train) { return train.train.due() == due; });
    if (outside == outside_triggers_.end()) {
        set_signal(kDark, std::nullopt, due);
        return;
    }
    ++outside->train.sent;
    if (--outside->left == 0) {
        outside_triggers_.erase(outside);
        trigger(due);
    } else {
        trigger(due, &outside->train);
    }
}

// All of the unit's own triggers at once that are missed, whatever else happens meanwhile: a day of them takes no
// longer than the exposures in it.
void RealTimeUnit::pass_missed_triggers(Time until) {
    if (!continuous_ || !powered_) {
        return;
    }
    std::int64_t const count = own_triggers_.due_before(std::min(until + Duration(1), accepts_from()));
    if (count > 0) {
        own_triggers_.sent += count;
        triggers_ += static_cast<unsigned long>(count);
        miss(count);
    }
}

void RealTimeUnit::miss(std::int64_t triggers) {
    missed_ += triggers;
    missed_frame_id_ = sensor_ != nullptr ? sensor_->frames() : 0;
}

void RealTimeUnit::exchange_sensor(ImageSensor* fitted) {
    sensor_ = fitted;
    acquiring_cameras_.clear();
    waiting_.reset();
    ready_ = now_;
    set_signal(kDark, std::nullopt, now_);
    if (exposing()) {
        end_exposure(now_);
    }
}

RealTimeUnit::Exposure RealTimeUnit::exposure_after(Time trigger, Train const* train) const {
    Duration const offset(exposure_offset_us_);
    Duration const exposure(exposure_us_);
    Duration const busy = std::max(exposure, frame_period(limits_of(sensor_ != nullptr ? &sensor_->facts() : nullptr)));
    Duration spread = std::max(busy, kAlone);
    double rate = static_cast<double>(kSecond) / static_cast<double>(spread.count());
    if (train != nullptr) {
        // Until the train's next one that is not missed.
        std::int64_t const next = train->first_from(trigger + std::max(busy, Duration(prohibited_time_us_)));
        spread = train->at(next) - trigger;
        rate = static_cast<double>(train->rate) / static_cast<double>(next - train->sent + 1);
    }
    Time const start = trigger + offset;
    return {start, start + exposure, start + busy, {rate, exposure_us_}, start + spread};
}

bool RealTimeUnit::accepts(Time trigger, Exposure const& exposure) const {
    bool const fits = !waiting_ || (exposure.start == trigger && exposure.ready <= waiting_->start);
    return trigger >= accepts_from() && fits;
}

Time RealTimeUnit::accepts_from() const {
    Time const in_time = ready_ - Duration(exposure_offset_us_);
    return last_accepted_ ? std::max(in_time, *last_accepted_ + Duration(prohibited_time_us_)) : in_time;
}

void RealTimeUnit::trigger(Time now, Train const* train) {
    if (!powered_) {
        return;
    }
    ++triggers_;
    Exposure const exposure = exposure_after(now, train);
    if (!accepts(now, exposure)) {
        miss(1);
        return;
    }
    last_accepted_ = now;
    if (sensor_ != nullptr) {
        sensor_->take_frames(1);
        acquired_ += acquiring() ? 1 : 0;
    }
    if (exposure.start == now) {
        begin(exposure);
    } else {
        waiting_ = exposure;
    }
}

void RealTimeUnit::begin(Exposure const& exposure) {
    exposing_until_ = exposure.end;
    ready_ = exposure.ready;
    set_signal(exposure.signal, exposure.signal_end, exposure.start);
    pins_.set_exposing(true, exposure.start);
}

void RealTimeUnit::end_exposure(Time now) {
    exposing_until_.reset();
    pins_.set_exposing(false, now);
}

void RealTimeUnit::set_signal(ExposureSignal const& signal, std::optional<Time> end, Time now) {
    signal_end_ = end;
    if (signal == signal_) {
        return;
    }
    ++signal_changes_;
    if (follower_) {
        follower_(now, signal_);
    }
    signal_ = signal;
}

void RealTimeUnit::trigger(unsigned int count, Time now) {
    for (; count > 0; --count) {
        trigger(now);
    }
}

int RealTimeUnit::set_imager_type(hal::imx_te type) {
    if (type != hal::imx_te::none && find_image_sensor(type) == nullptr) {
        return refuse(EINVAL);
    }
    imager_type_ = type;
    ExposureLimits const& limits = limits_of(find_image_sensor(type));
    exposure_us_ = std::clamp(exposure_us_, limits.min_us, limits.max_us);
    if (fps_ > limits.max_fps) {
        set_rate(limits.max_fps, limits);
    }
    return 0;
}

int RealTimeUnit::get_imager_type(hal::imx_te& type) const {
    type = imager_type_;
    return 0;
}

ExposureLimits const& RealTimeUnit::limits() const {
    return limits_of(find_image_sensor(imager_type_));
}

int RealTimeUnit::set_prohibited_time(unsigned int time_us) {
    prohibited_time_us_ = time_us;
    return 0;
}

int RealTimeUnit::get_prohibited_time(unsigned int& time_us) const {
    time_us = prohibited_time_us_;
    return 0;
}

int RealTimeUnit::set_exposure_offset(unsigned int offset_us) {
    exposure_offset_us_ = offset_us;
    return 0;
}

int RealTimeUnit::get_exposure_offset(unsigned int& offset_us) const {
    offset_us = exposure_offset_us_;
    return 0;
}

int RealTimeUnit::set_exposure(unsigned int exposure_us) {
    return set_exposure(exposure_us, limits());
}

int RealTimeUnit::set_exposure(unsigned int exposure_us, ExposureLimits const& limits) {
    if (exposure_us < limits.min_us || exposure_us > limits.max_us) {
        return refuse(EINVAL);
    }
    exposure_us_ = exposure_us;
    return 0;
}

int RealTimeUnit::get_exposure(unsigned int& exposure_us) const {
    exposure_us = exposure_us_;
    return 0;
}

int RealTimeUnit::single_shot(bool start) {
    if (start) {
        trigger(now_);
    }
    return 0;
}

int RealTimeUnit::set_continuous(bool continuous) {
    if (continuous && !continuous_) {
        restart_own_triggers();
    }
    continuous_ = continuous;
    return 0;
}

int RealTimeUnit::set_rate(unsigned int fps) {
    return set_rate(fps, limits());
}

int RealTimeUnit::set_rate(unsigned int fps, ExposureLimits const& limits) {
    if (fps < kLeastFps || fps > limits.max_fps) {
        return refuse(EINVAL);
    }
    fps_ = fps;
    restart_own_triggers();
    return 0;
}

void RealTimeUnit::restart_own_triggers() {
    own_triggers_ = {now_, fps_, 1};
}

int RealTimeUnit::get_missed_triggers(unsigned long& frame_id, long& missed) const {
    frame_id = missed_frame_id_;
    missed = missed_;
    return 0;
}

int RealTimeUnit::reset_missed_triggers() {
    missed_ = 0;
    missed_frame_id_ = 0;
    return 0;
}

int RealTimeUnit::set_acquiring(unsigned int camera, bool acquiring) {
    if (acquiring) {
        acquiring_cameras_.insert(camera);
    } else {
        acquiring_cameras_.erase(camera);
    }
    return 0;
}

int RealTimeUnit::dio_available(bool& available) const {
    available = pins_.powered();
    return 0;
}

int RealTimeUnit::set_pin_config(unsigned char pin, hal::dio_pin_config_t const& config) {
    return pins_.set_config(pin, config);
}

int RealTimeUnit::get_pin_config(unsigned char pin, hal::dio_pin_config_t& config) const {
    return pins_.get_config(pin, config);
}

int RealTimeUnit::set_pin_value(unsigned char pin, bool value) {
    return pins_.set_value(pin, value, now_);
}

int RealTimeUnit::get_pin_value(unsigned char pin, bool& value) const {
    return pins_.get_value(pin, value);
}

int RealTimeUnit::get_pin_values(std::bitset<DigitalIo::kPins>& values) const {
    values = pins_.values();
    return 0;
}

int RealTimeUnit::set_light_bar(hal::color_t color) {
    if (color.brightness > kFullBrightness) {
        return refuse(EINVAL);
    }
    light_bar_ = color;
    return 0;
}

void RealTimeUnit::set_supply(Supply supply) {
    pins_.set_powered(supply == Supply::dc_24v);
}

void RealTimeUnit::drive_pin(unsigned char pin, std::optional<bool> high) {
    trigger(pins_.drive(pin, high, now_), now_);
}

void RealTimeUnit::trigger_from_outside(unsigned int count, std::optional<unsigned int> rate) {
    if (!rate || count < 2) {
        trigger(count, now_);
        return;
    }
    outside_triggers_.push_back({{now_, *rate, 1}, count - 1});
    trigger(now_, &outside_triggers_.back().train);
}

}  // namespace sim
