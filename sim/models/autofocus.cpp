// The autofocus module: a lens on a motor, a mirror whose resonance the calibration finds, and a DOE.
#include "sim/models/autofocus.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>

#include "sim/models/refusal.h"

namespace sim {

namespace {

struct TableEntry {
    double mm;    // distance of the focus
    double step;  // of the motor, ascending
};

constexpr int kEntries = 6;

// A step that no motor reaches, in maintenance mode neither.
constexpr unsigned short kOutOfReach = Autofocus::kHighestStep + 1;

// The nearer the focus, the further the lens is out.
struct DeviceType {
    char const* name;
    char const* number;           // in the menu
    unsigned short frequency_hz;  // resonance of its mirror
    TableEntry table[kEntries];
};

// The types differ in how far their lens looks; the longer it is, the heavier and slower the mirror before it.
constexpr DeviceType kDeviceTypes[] = {
    {"R47XXXX1", "1", 183, {{1000, 100}, {500, 365}, {250, 895}, {120, 1795}, {80, 2475}, {65, 2900}}},
    {"R47XXXX2", "2", 176, {{1500, 100}, {700, 380}, {400, 800}, {220, 1500}, {150, 2190}, {110, 2900}}},
    {"R47XXXX3", "3", 158, {{3000, 100}, {1500, 340}, {800, 850}, {500, 1410}, {350, 2130}, {270, 2900}}},
};

DeviceType const* find_type(std::string const& name) {
    auto const* const found =
        std::find_if(std::begin(kDeviceTypes), std::end(kDeviceTypes),
                     [&](DeviceType const& type) { return name == type.name || name == type.number; });
    return found == std::end(kDeviceTypes) ? nullptr : found;
}

double between(double x, double x1, double y1, double x2, double y2) {
    return y1 + (x - x1) / (x2 - x1) * (y2 - y1);
}

// The table is straight between its entries, and beyond them as between the last two.
double mm_at(DeviceType const& type, double step) {
    int i = 1;
    while (i < kEntries - 1 && step > type.table[i].step) {
        ++i;
    }
    TableEntry const& low = type.table[i - 1];
    TableEntry const& high = type.table[i];
    return between(step, low.step, low.mm, high.step, high.mm);
}

double step_at(DeviceType const& type, double mm) {
    int i = 1;
    while (i < kEntries - 1 && mm < type.table[i].mm) {
        ++i;
    }
    TableEntry const& low = type.table[i - 1];
    TableEntry const& high = type.table[i];
    return between(mm, low.mm, low.step, high.mm, high.step);
}

unsigned short rounded(double value) {
    return static_cast<unsigned short>(std::lround(value));
}

}  // namespace

int Autofocus::set_device_type(std::string const& name) {
    DeviceType const* const type = find_type(name);
    if (type == nullptr) {
        return refuse(EINVAL);
    }
    device_type_ = type->name;
    return 0;
}

void Autofocus::advance(Time now) {
    if (now <= now_) {
        return;
    }
    move(now - now_);
    now_ = now;
    if (calibrated_at_ && now >= *calibrated_at_) {
        finish_calibration();
    }
}

void Autofocus::lose_power() {
    powered_ = false;
    target_ = position_;
    without_motion_ = Duration(0);
    homing_ = false;
    calibrated_at_.reset();
    frequency_hz_.reset();
    raised_ = {};
    doe_mode_ = hal::doe_mode_te::disabled;
    doe_forced_ = false;
    maintenance_ = false;
}

void Autofocus::gain_power() {
    powered_ = true;
    if (present_) {
        reset();
    }
}

void Autofocus::set_present(bool present) {
    if (present == present_) {
        return;
    }
    bool const powered = powered_;
    present_ = present;
    lose_power();  // also when it comes: what was set by hand meanwhile met nobody
    if (powered) {
        gain_power();
    }
}

void Autofocus::move(Duration length) {
    if (!moving() || !powered_ || !present_) {
        return;
    }
    if (!module.motor_free) {
        without_motion_ += length;
        if (without_motion_ >= kStuckAfter) {
            find_stuck();
        }
        return;
    }
    double const way = kStepsPerSecond * std::chrono::duration<double>(length).count();
    position_ = position_ < target_ ? std::min(position_ + way, target_) : std::max(position_ - way, target_);
    without_motion_ = Duration(0);
    homing_ = homing_ && position_ != target_;
}

void Autofocus::find_stuck() {
    raised_.motor_stuck = true;
    raised_.initialization_error = raised_.initialization_error != 0 || homing_;
    homing_ = false;
    target_ = position_;
    without_motion_ = Duration(0);
}

int Autofocus::answer() {
    if (!present_) {
        return refuse(ENODEV);
    }
    if (!module.link_up) {
        raised_.communication_error = true;
        return refuse(EIO);
    }
    return 0;
}

int Autofocus::get_position(unsigned short& position) const {
    position = rounded(position_);
    return 0;
}

// 0, or why the motor cannot go there now.
int Autofocus::check_position(unsigned int position) const {
    if (calibrating() || homing_) {
        return EBUSY;
    }
    return position < lowest() || position > highest() ? ERANGE : 0;
}

int Autofocus::set_position(unsigned int position) {
    int const refusal = check_position(position);
    if (refusal != EBUSY) {
        raised_.target_unreachable = refusal == ERANGE;
    }
    if (refusal != 0) {
        return refuse(refusal);
    }
    target_ = position;
    return 0;
}

int Autofocus::put_position(unsigned int position) {
    int const refusal = check_position(position);
    return refusal == 0 ? set_position(position) : refuse(refusal);
}

int Autofocus::get_position_limits(unsigned short& min, unsigned short& max) const {
    min = lowest();
    max = highest();
    return 0;
}

int Autofocus::get_position_mm(unsigned short& position) const {
    DeviceType const* const type = find_type(device_type_);
    if (!module.table_filled || type == nullptr) {
        return refuse(ENODATA);
    }
    position = rounded(mm_at(*type, position_));
    return 0;
}

int Autofocus::set_position_mm(unsigned int position) {
    DeviceType const* const type = find_type(device_type_);
    if (!module.table_filled || type == nullptr) {
        return refuse(ENODATA);
    }
    bool const in_table = position >= type->table[kEntries - 1].mm && position <= type->table[0].mm;
    unsigned short const step = in_table ? rounded(step_at(*type, position)) : kOutOfReach;
    return set_position(step);
}

int Autofocus::get_position_limits_mm(std::string const& device_type, unsigned short& min, unsigned short& max) const {
    DeviceType const* const type = find_type(device_type);
    if (type == nullptr) {
        return refuse(EINVAL);
    }
    if (!module.table_filled) {
        return refuse(ENODATA);
    }
    min = rounded(type->table[kEntries - 1].mm);
    max = rounded(type->table[0].mm);
    return 0;
}

int Autofocus::reset() {
    raised_ = {};
    calibrated_at_.reset();
    frequency_hz_.reset();
    target_ = lowest();
    // One that is there already has nothing to do; that a stuck one cannot move off and back again takes its time.
    homing_ = position_ != target_ || !module.motor_free;
    return 0;
}

int Autofocus::calibrate() {
    if (calibrating() || homing_) {
        return refuse(EBUSY);
    }
    frequency_hz_.reset();
    calibrated_at_ = now_ + kCalibrationTime;
    return 0;
}

void Autofocus::finish_calibration() {
    calibrated_at_.reset();
    DeviceType const* const type = find_type(device_type_);
    if (module.mirror_fitted && module.mirror_healthy && type != nullptr) {
        frequency_hz_ = type->frequency_hz;
    }
    raised_.mirror_failure = module.mirror_fitted && !module.mirror_healthy;
}

int Autofocus::get_calibration_frequency(unsigned short& frequency_hz) const {
    if (!frequency_hz_) {
        return refuse(ENODATA);
    }
    frequency_hz = *frequency_hz_;
    return 0;
}

hal::af_error Autofocus::errors() const {
    hal::af_error errors = raised_;
    errors.no_valid_frequency = !frequency_hz_;
    errors.no_mirror = !module.mirror_fitted;
    errors.empty_calibration_table = !module.table_filled;
    return errors;
}

int Autofocus::set_doe_mode(hal::doe_mode_te mode) {
    if (mode != hal::doe_mode_te::disabled && mode != hal::doe_mode_te::off_by_trigger) {
        return refuse(EINVAL);
    }
    doe_mode_ = mode;
    return 0;
}

bool Autofocus::doe_active(bool exposing) const {
    return present_ && (doe_forced_ || (doe_mode_ == hal::doe_mode_te::off_by_trigger && !exposing));
}

void Autofocus::set_maintenance_mode(bool enabled) {
    maintenance_ = enabled;
    target_ = std::clamp<double>(target_, lowest(), highest());
}

}  // namespace sim
