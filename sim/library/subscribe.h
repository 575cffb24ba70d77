// Subscriptions of the library's objects to their callbacks.
#pragma once

#include <memory>

#include "sim/core/subscription.h"

namespace sim {

// A subscription for an object of the library. From the first one on, the end of the process stops all deliveries
// before the program's statics go.
std::shared_ptr<Subscription> subscribe(bool held);

}  // namespace sim
