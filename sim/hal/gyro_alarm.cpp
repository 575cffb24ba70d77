// The tilt alarm.
#include "hal/gyro_alarm.h"

#include "hal/gyro.h"
#include "sim/hal/base_impl.h"
#include "sim/hal/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::no_model;

struct gyro_alarm_t::impl : sim::Object {
    using Object::Object;
};

gyro_alarm_t::gyro_alarm_t(gyro_t& gyro, unsigned short sensor_id) : impl_(new impl(sim::paths_of(gyro))) {
    construct(*impl_, "gyro_alarm_t::gyro_alarm_t", in(sim::number_of(gyro), sensor_id));
}

gyro_alarm_t::~gyro_alarm_t() {
    destroy(*impl_, "gyro_alarm_t::~gyro_alarm_t");
    delete impl_;
}

int gyro_alarm_t::set_angle_limit(float degrees) {
    return gate(impl_, "gyro_alarm_t::set_angle_limit", in(degrees), [](Device&) { return no_model(); });
}

int gyro_alarm_t::teach_current_position() {
    return gate(impl_, "gyro_alarm_t::teach_current_position", [](Device&) { return no_model(); });
}

}  // namespace hal
