// The one gate that every call passes: fault rules, lock, time, the device, journal.
#pragma once

#include <string>

#include "sim/calls/codec.h"
#include "sim/calls/messages.h"
#include "sim/service/program.h"

namespace sim {

// Who calls.
struct CallOrigin {
    Device& device;
    Program& program;
    EventLane* lane;  // where the call comes from a callback
};

// Carries out the call, whose arguments follow in `bytes`, and answers the message of the reply; an empty one where the
// bytes are no such call. Blocks for as long as the operation does.
std::string answer(CallOrigin const& caller, Call const& call, Decoder& bytes);

}  // namespace sim
