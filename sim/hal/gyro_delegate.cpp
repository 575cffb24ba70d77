// Hands each sample of one virtual sensor to a function.
#include "hal/gyro_delegate.h"

#include "hal/gyro.h"
#include "sim/hal/base_impl.h"
#include "sim/hal/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::in;

struct gyro_delegate_t::impl : sim::Object {
    using Object::Object;
};

gyro_delegate_t::gyro_delegate_t(gyro_t& gyro, int sensor_id,
                                 std::function<void(unsigned char, cb_struct_te, void*)> function)
    : impl_(new impl(sim::paths_of(gyro))) {
    construct(*impl_, "gyro_delegate_t::gyro_delegate_t", in(sim::number_of(gyro), sensor_id, function));
}

gyro_delegate_t::~gyro_delegate_t() {
    destroy(*impl_, "gyro_delegate_t::~gyro_delegate_t");
    delete impl_;
}

}  // namespace hal
