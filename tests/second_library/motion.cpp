// The second library: sensor hub, tilt alarm, delegate and button.
#include <utility>

#include "hal/button.h"
#include "hal/gyro.h"
#include "hal/gyro_alarm.h"
#include "hal/gyro_delegate.h"
#include "hal/quaternion.h"
#include "tests/second_library/second_library.h"

namespace hal {

using second_library::add_source;
using second_library::answer;
using second_library::answer_hold;
using second_library::born;
using second_library::Callback;
using second_library::called;
using second_library::dies;
using second_library::sample_for;
using second_library::silence;
using second_library::Source;
using second_library::source_of;
using second_library::taken;

quaternion_float_t& quaternion_float_t::operator=(quaternion_s16_t const& sample) {
    x = sample.x;
    y = sample.y;
    z = sample.z;
    w = sample.w;
    accuracy = sample.accuracy;
    return *this;
}

// Any angles, not a number and infinities as well.
int gyro_t::quaternion_2_yaw_pitch_roll(quaternion_float_t const&, float* ypr, bool) {
    for (int axis = 0; axis < 3; ++axis) {
        ypr[axis] = taken<float>();
    }
    return 0;
}

gyro_t::gyro_t(char const* device, int access, char const*, char const*, unsigned short) : base_t(device, access) {
    add_source({this, nullptr, true, false, [this] { return sample_for(callback_records[taken<bool>()].function); }});
}

gyro_t::~gyro_t() {
    silence(this);
}

int gyro_t::irq_callback_hold(bool hold) {
    return answer_hold(this, hold);
}

int gyro_t::get_status(unsigned char& status) const {
    return answer(this, status);
}

int gyro_t::get_revision(revision_t& revision) const {
    return answer(this, revision);
}

int gyro_t::boot() {
    return answer(this);
}

int gyro_t::upload_firmware(char const*) {
    return answer(this);
}

int gyro_t::install_callbacks() {
    return answer(this);
}

int gyro_t::activate_vsensor(unsigned int, float, unsigned int) {
    return answer(this);
}

int gyro_t::info_firmware() {
    return answer(this);
}

int gyro_t::info_vsensor_list() {
    return answer(this);
}

int gyro_t::info_psensor_list() {
    return answer(this);
}

int gyro_t::info_vsensor(int) {
    return answer(this);
}

int gyro_t::info_vsensor_cfg(int) {
    return answer(this);
}

int gyro_t::info_psensor(int) {
    return answer(this);
}

int gyro_t::info_irq() {
    return answer(this);
}

int gyro_t::info_irq_ctrl() {
    return answer(this);
}

gyro_alarm_t::gyro_alarm_t(gyro_t& gyro, unsigned short) : impl_(nullptr) {
    called(&gyro);
    born(this);
    add_source({this, &gyro, source_of(&gyro).held, false,
                [this]() -> Callback { return taken<bool>() ? on_position_left : on_position_reached; }});
}

gyro_alarm_t::~gyro_alarm_t() {
    dies(this);
}

int gyro_alarm_t::set_angle_limit(float) {
    return answer(this);
}

int gyro_alarm_t::teach_current_position() {
    return answer(this);
}

gyro_delegate_t::gyro_delegate_t(gyro_t& gyro, int, std::function<void(unsigned char, cb_struct_te, void*)> function)
    : impl_(nullptr) {
    called(&gyro);
    born(this);
    Source const& watched = source_of(&gyro);
    bool const held = watched.asked && watched.held;
    add_source({this, &gyro, held, false, [function = std::move(function)] { return sample_for(function); }});
}

gyro_delegate_t::~gyro_delegate_t() {
    dies(this);
}

button_t::button_t(char const*, long, bool, unsigned long) : impl_(nullptr) {
    born(this);
    add_source({this, nullptr, true, false, [this]() -> Callback {
                    auto const choice = taken<unsigned char>();
                    return (choice < 128 ? release_records : press_records)[choice % 5].action;
                }});
}

button_t::~button_t() {
    dies(this);
}

int button_t::irq_callback_hold(bool hold) {
    return answer_hold(this, hold);
}

int button_t::irq_read(bool& state) {
    return answer(this, state);
}

}  // namespace hal
