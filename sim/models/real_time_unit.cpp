// The real-time unit: triggers, exposure timing, digital I/O, power source and light bar.
#include "sim/models/real_time_unit.h"

#include <algorithm>

#include "sim/models/refusal.h"

namespace sim {

namespace {

constexpr std::int64_t kSecond = 1'000'000;  // us
constexpr unsigned int kFullBrightness = 100;

// What the unit does without an imager: as fast as its generator, as short and as long as any sensor.
constexpr SensorFacts kNoImager{hal::imx_te::none, "none", "", 0, 0, 1, 0, 1, 100'000'000, 1000};

SensorFacts const& facts_of(hal::imx_te type) {
    SensorFacts const* const sensor = find_image_sensor(type);
    return sensor != nullptr ? *sensor : kNoImager;
}

Duration frame_period(SensorFacts const& facts) {
    return Duration(kSecond / facts.max_fps);
}

void keep_earlier(std::optional<Time>& next, std::optional<Time> due) {
    if (due && (!next || *due < *next)) {
        next = due;
    }
}

}  // namespace

Time RealTimeUnit::Train::due() const {
    return start + Duration(sent * kSecond / rate);
}

void RealTimeUnit::advance(Time now, ImageSensor* fitted) {
    sensor_ = fitted;
    for (auto due = next_event(); due && *due <= now; due = next_event()) {
        run_event(*due);
    }
    now_ = now;
}

std::optional<Time> RealTimeUnit::next_event() const {
    std::optional<Time> next = pins_.next_change();
    if (continuous_) {
        keep_earlier(next, own_triggers_.due());
    }
    for (OutsideTrain const& outside : outside_triggers_) {
        keep_earlier(next, outside.train.due());
    }
    if (!exposure_edges_.empty()) {
        keep_earlier(next, exposure_edges_.front().due);
    }
    return next;
}

// One event of those that are due: an exposure's end before the trigger that it would make miss.
void RealTimeUnit::run_event(Time due) {
    if (!exposure_edges_.empty() && exposure_edges_.front().due == due) {
        pins_.set_exposing(exposure_edges_.front().exposing, due);
        exposure_edges_.pop_front();
        return;
    }
    if (pins_.next_change() == due) {
        trigger(pins_.change(), due);
        return;
    }
    if (continuous_ && own_triggers_.due() == due) {
        ++own_triggers_.sent;
        trigger(due);
        return;
    }
    auto const outside = std::find_if(outside_triggers_.begin(), outside_triggers_.end(),
                                      [due](OutsideTrain const& train) { return train.train.due() == due; });
    ++outside->train.sent;
    if (--outside->left == 0) {
        outside_triggers_.erase(outside);
    }
    trigger(due);
}

Time RealTimeUnit::exposure_start(Time trigger) const {
    return trigger + Duration(exposure_offset_us_);
}

bool RealTimeUnit::accepts_trigger(Time now) const {
    return exposure_start(now) >= sensor_ready_ &&
           (!last_accepted_ || now - *last_accepted_ >= Duration(prohibited_time_us_));
}

void RealTimeUnit::trigger(Time now) {
    ++triggers_;
    if (sensor_ == nullptr) {
        return;
    }
    if (!accepts_trigger(now)) {
        ++missed_;
        missed_frame_id_ = sensor_->frames();
        return;
    }
    Duration const exposure(exposure_us_);
    Time const start = exposure_start(now);
    sensor_->take_frame();
    acquired_ += acquiring_ ? 1 : 0;
    last_accepted_ = now;
    sensor_ready_ = start + std::max(exposure, frame_period(sensor_->facts()));
    exposure_edges_.push_back({start, true});
    exposure_edges_.push_back({start + exposure, false});
}

void RealTimeUnit::trigger(unsigned int count, Time now) {
    for (; count > 0; --count) {
        trigger(now);
    }
}

int RealTimeUnit::set_imager_type(hal::imx_te type) {
    if (type < hal::imx_te::none || type > hal::imx_te::imx567) {
        return refuse(EINVAL);
    }
    imager_type_ = type;
    return 0;
}

int RealTimeUnit::get_imager_type(hal::imx_te& type) const {
    type = imager_type_;
    return 0;
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
    return set_exposure(exposure_us, facts_of(imager_type_));
}

int RealTimeUnit::set_exposure(unsigned int exposure_us, SensorFacts const& limits) {
    if (exposure_us < limits.min_exposure_us || exposure_us > limits.max_exposure_us) {
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
    return set_rate(fps, facts_of(imager_type_));
}

int RealTimeUnit::set_rate(unsigned int fps, SensorFacts const& limits) {
    if (fps < 1 || fps > limits.max_fps) {
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

int RealTimeUnit::set_acquiring(bool acquiring) {
    acquiring_ = acquiring;
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

void RealTimeUnit::drive_pin(unsigned char pin, bool high) {
    trigger(pins_.drive(pin, high, now_), now_);
}

void RealTimeUnit::trigger_from_outside(unsigned int count, std::optional<unsigned int> rate) {
    if (!rate) {
        trigger(count, now_);
    } else if (count > 0) {
        trigger(now_);
        if (count > 1) {
            outside_triggers_.push_back({{now_, *rate, 1}, count - 1});
        }
    }
}

}  // namespace sim
