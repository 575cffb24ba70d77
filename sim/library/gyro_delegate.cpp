// Hands each sample of one virtual sensor to a function.
#include "hal/gyro_delegate.h"

#include <utility>

#include "hal/gyro.h"
#include "sim/library/base_impl.h"
#include "sim/library/gate.h"
#include "sim/library/gyro_impl.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::in;
using sim::SampleFeed;

struct gyro_delegate_t::impl : sim::Object {
    using Object::Object;

    std::shared_ptr<SampleFeed> feed;
    SampleFeed::ListenerId listener;
};

gyro_delegate_t::gyro_delegate_t(gyro_t& gyro, int sensor_id,
                                 std::function<void(unsigned char, cb_struct_te, void*)> function)
    : impl_(new impl(sim::paths_of(gyro))) {
    construct(*impl_, "gyro_delegate_t::gyro_delegate_t", in(sim::number_of(gyro), sensor_id, function));
    impl_->feed = sim::feed_of(gyro);
    impl_->listener = impl_->feed->listen(
        SampleFeed::From::now, [number = impl_->number, sensor_id, function = std::move(function)](auto const& sample) {
            if (function && sample.sensor_id == sensor_id) {
                sim::journal_callback(number, "gyro_delegate_t", in(sensor_id));
                sim::call(function, sample);
            }
        });
}

gyro_delegate_t::~gyro_delegate_t() {
    impl_->feed->ignore(impl_->listener);
    destroy(*impl_, "gyro_delegate_t::~gyro_delegate_t");
    delete impl_;
}

}  // namespace hal
