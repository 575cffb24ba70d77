// The tilt alarm.
#include "hal/gyro_alarm.h"

#include "hal/gyro.h"
#include "sim/library/base_impl.h"
#include "sim/library/gate.h"
#include "sim/library/gyro_impl.h"
#include "sim/models/refusal.h"
#include "sim/models/tilt_alarm.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::SampleFeed;

struct gyro_alarm_t::impl : sim::Object {
    using Object::Object;

    // Called from a thread of the library.
    void judge(gyro_alarm_t const& owner, SampleFeed::Sample const& sample);

    unsigned short sensor_id = 0;
    sim::TiltAlarm alarm;  // touched with the device's lock held
    std::shared_ptr<SampleFeed> feed;
    SampleFeed::ListenerId listener;
};

void gyro_alarm_t::impl::judge(gyro_alarm_t const& owner, SampleFeed::Sample const& sample) {
    if (sample.sensor_id != sensor_id || sample.kind != cb_struct_te::quaternion_s16) {
        return;
    }
    std::optional<sim::TiltAlarm::Transition> transition;
    {
        auto const lock = Device::instance().lock();
        transition = alarm.judge(sim::rotation_of(sample.quaternion));
    }
    if (!transition) {
        return;
    }
    bool const reached = *transition == sim::TiltAlarm::Transition::reached;
    auto const action = reached ? owner.on_position_reached : owner.on_position_left;
    if (action) {
        sim::journal_callback(number, reached ? "gyro_alarm_t::on_position_reached" : "gyro_alarm_t::on_position_left",
                              in());
        action();
    }
}

gyro_alarm_t::gyro_alarm_t(gyro_t& gyro, unsigned short sensor_id) : impl_(new impl(sim::paths_of(gyro))) {
    construct(*impl_, "gyro_alarm_t::gyro_alarm_t", in(sim::number_of(gyro), sensor_id));
    impl_->sensor_id = sensor_id;
    impl_->feed = sim::feed_of(gyro);
    impl_->listener = impl_->feed->listen(SampleFeed::From::first_release,
                                          [this](auto const& sample) { impl_->judge(*this, sample); });
}

gyro_alarm_t::~gyro_alarm_t() {
    impl_->feed->ignore(impl_->listener);
    destroy(*impl_, "gyro_alarm_t::~gyro_alarm_t");
    delete impl_;
}

int gyro_alarm_t::set_angle_limit(float degrees) {
    return gate(impl_, "gyro_alarm_t::set_angle_limit", in(degrees),
                [&](Device&) { return impl_->alarm.set_angle_limit(degrees) ? 0 : sim::refuse(EINVAL); });
}

int gyro_alarm_t::teach_current_position() {
    return gate(impl_, "gyro_alarm_t::teach_current_position", [&](Device& d) {
        quaternion_s16_t position{};
        int const status = d.hub.measure(impl_->sensor_id, d.now(), position);
        if (status == 0) {
            impl_->alarm.teach(sim::rotation_of(position));
        }
        return status;
    });
}

}  // namespace hal
