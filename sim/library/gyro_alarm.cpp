// The tilt alarm.
#include "hal/gyro_alarm.h"

#include "sim/library/call.h"
#include "sim/library/callbacks.h"
#include "sim/library/gyro_impl.h"

namespace hal {

using sim::call;
using sim::in;
namespace operations = sim::operations;

struct gyro_alarm_t::impl : sim::Object, sim::EventTaker {
    explicit impl(gyro_alarm_t const& owner) : alarm(owner) {}

    void take(sim::Event const& event, sim::EventTurn& turn) override {
        bool const reached = event.kind == sim::EventKind::position_reached;
        auto const action = reached ? alarm.on_position_reached : alarm.on_position_left;
        if (action) {
            turn.call(action);
        }
    }

    gyro_alarm_t const& alarm;
};

gyro_alarm_t::gyro_alarm_t(gyro_t& gyro, unsigned short sensor_id) : impl_(new impl(*this)) {
    sim::construct<operations::gyro_alarm_t::constructor>(*impl_, in(sim::number_of(gyro), sensor_id));
    sim::attach(*impl_, *impl_);
}

gyro_alarm_t::~gyro_alarm_t() {
    sim::destroy<operations::gyro_alarm_t::destructor>(*impl_);
    sim::detach(*impl_);
    delete impl_;
}

int gyro_alarm_t::set_angle_limit(float degrees) {
    return call<operations::gyro_alarm_t::set_angle_limit>(impl_, in(degrees));
}

int gyro_alarm_t::teach_current_position() {
    return call<operations::gyro_alarm_t::teach_current_position>(impl_);
}

}  // namespace hal
