// What the function that answers an operation works on.
#pragma once

#include <cerrno>
#include <functional>
#include <memory>

#include "sim/device/device.h"
#include "sim/service/program.h"

namespace sim {

// A call on its way, whatever it calls. The device is this call's alone while it has `device`.
class CallContext {
public:
    CallContext(Device::Access& access, Program& caller, EventLane* caller_lane)
        : device(access), program(caller), lane_(caller_lane) {}

    Device::Access& device;
    Program& program;

    // Lets time pass, for operations that take it, or until the program has ended. What was looked at before must be
    // looked at again.
    void pass(Duration length);
    // Forgets what the object's program has to be told of it, and waits until no callback of its runs; at once where
    // this call comes from one.
    void silence(ServedObject& object);
    // The same for a gyro_t and all who listen through it.
    void silence_all(GyroObject& gyro);

private:
    void wait_for(EventLane& callbacks, std::function<bool(ServedObject const&)> const& is_concerned);

    EventLane* const lane_;  // null: the call comes from no callback
};

// An operation's object together with the device. `object` is null for constructors and static operations.
template <typename ObjectType>
struct CallTarget {
    CallContext& call;
    ObjectType* object;
    std::unique_ptr<ServedObject> constructed{};  // what a constructor leaves here

    Components* operator->() const { return &*call.device; }
    Components& device() const { return *call.device; }
    Time now() const { return call.device.now(); }

    // The time that an operation takes. 0, or the errno for which it fails: the object cannot be used any more, or
    // the device has been without power meanwhile and has forgotten what it was doing.
    int take_time(Duration length) {
        auto const changes = device().power_changes();
        call.pass(length);
        int const gone = object->check();
        return gone != 0 ? gone : device().power_changes() != changes ? EIO : 0;
    }

    template <typename Constructed, typename... Argument>
    int construct(Argument&&... arguments) {
        constructed = std::make_unique<Constructed>(device(), call.program, std::forward<Argument>(arguments)...);
        return constructed->open_error();
    }
};

}  // namespace sim
