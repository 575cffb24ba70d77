// The way from the sensor hub to the programs that listen to it.
#include "sim/device/sample_delivery.h"

#include <algorithm>

#include "sim/device/device.h"

namespace sim {

void SampleDelivery::remove(SampleListener& listener) {
    listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), &listener), listeners_.end());
}

void SampleDelivery::schedule() {
    auto const next = somebody_listens() ? hub_.next_delivery() : std::nullopt;
    if (next == due_) {
        return;
    }
    if (due_) {
        device_->timeline.cancel(event_);
    }
    due_ = next;
    if (next) {
        event_ = device_->timeline.at(*next, [this] { deliver(); });
    }
}

void SampleDelivery::pass_unheard(Time now) {
    if (!somebody_listens()) {
        hub_.pass_samples(now);
    }
}

bool SampleDelivery::somebody_listens() const {
    return std::any_of(listeners_.begin(), listeners_.end(),
                       [](SampleListener const* listener) { return listener->listens(); });
}

void SampleDelivery::deliver() {
    auto const device = device_->access();
    due_.reset();
    bool read = false;
    for (SensorHub::Sample const& sample : hub_.take_samples(device.now())) {
        for (SampleListener* const listener : listeners_) {
            read = listener->take(sample) || read;
        }
    }
    if (read) {
        hub_.read_interrupt();
    }
}

}  // namespace sim
