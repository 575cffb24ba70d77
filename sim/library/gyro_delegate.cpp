// Hands each sample of one virtual sensor to a function.
#include "hal/gyro_delegate.h"

#include <memory>
#include <utility>

#include "sim/library/call.h"
#include "sim/library/callbacks.h"
#include "sim/library/gyro_impl.h"

namespace hal {

using sim::in;
namespace operations = sim::operations;

using DataFunction = std::function<void(unsigned char, cb_struct_te, void*)>;

struct gyro_delegate_t::impl : sim::Object, sim::EventTaker {
    explicit impl(DataFunction called) : function(std::make_shared<DataFunction>(std::move(called))) {}

    void take(sim::Event const& event, sim::EventTurn& turn) override {
        auto const called = function;  // lives on where it destroys the delegate
        turn.call([&] { sim::call_with(*called, event.sample); });
    }

    std::shared_ptr<DataFunction const> const function;
};

gyro_delegate_t::gyro_delegate_t(gyro_t& gyro, int sensor_id, DataFunction function)
    : impl_(new impl(std::move(function))) {
    sim::FunctionGiven const given{static_cast<bool>(*impl_->function)};
    sim::construct<operations::gyro_delegate_t::constructor>(*impl_, in(sim::number_of(gyro), sensor_id, given));
    sim::attach(*impl_, *impl_);
}

gyro_delegate_t::~gyro_delegate_t() {
    sim::destroy<operations::gyro_delegate_t::destructor>(*impl_);
    sim::detach(*impl_);
    delete impl_;
}

}  // namespace hal
