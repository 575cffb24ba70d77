// Subscriptions of the library's objects to their callbacks.
#include "sim/library/subscribe.h"

#include <cstdlib>

#include "sim/device/device.h"

namespace sim {

std::shared_ptr<Subscription> subscribe(bool held) {
    // Here and not when the library is loaded: what was registered last runs first, and the program's statics are
    // there before its first object with callbacks.
    [[maybe_unused]] static int const registered = std::atexit([] { Device::instance().timeline.stop(); });
    return std::make_shared<Subscription>(held);
}

}  // namespace sim
