// The one gate that every operation of the library passes: journal, fault rules, lock, node check, device.
#include "sim/library/gate.h"

namespace sim {

namespace {

FaultEffect ask_rules(Device& device, char const* operation) {
    FaultEffect fault;
    {
        auto const lock = device.lock();
        fault = device.faults.next_call(operation);
    }
    if (fault.delay) {
        device.timeline.take_time(*fault.delay);
    }
    return fault;
}

// Only that of base_t can be late.
void announce(Object& object) {
    if (!object.announced) {
        construct(object, "base_t::base_t", object.construction);
    }
}

}  // namespace

Call::Call(Object* object, char const* operation)
    : device_(Device::instance()), object_(object), operation_(operation), caller_errno_(errno) {
    if (object != nullptr) {
        announce(*object);
    }
    fault_ = ask_rules(device_, operation);
}

void Call::write(std::string const& text) const {
    device_.journal.write(device_.now(), object_ != nullptr ? object_->number : 0, operation_ + text);
}

void Call::finish(bool failed) const {
    if (!failed) {
        errno = caller_errno_;
    } else if (errno == 0) {
        errno = EINVAL;
    }
}

void construct(Object& object, char const* operation, std::string const& arguments) {
    int const caller_errno = errno;
    Device& device = Device::instance();
    object.announced = true;
    FaultEffect const fault = ask_rules(device, operation);
    if (fault.status.value_or(0) != 0) {
        object.open_error = EIO;
    }
    if (device.journal.on()) {
        device.journal.write(device.now(), object.number, std::string(operation) + "(" + arguments + ")");
    }
    errno = caller_errno;
}

void destroy(Object& object, char const* operation) {
    announce(object);
    object.dismissed = true;
    int const caller_errno = errno;
    Device& device = Device::instance();
    ask_rules(device, operation);
    if (device.journal.on()) {
        device.journal.write(device.now(), object.number, std::string(operation) + "()");
    }
    errno = caller_errno;
}

void journal_callback(int object, char const* holder, std::string const& arguments) {
    Device& device = Device::instance();
    if (device.journal.on()) {
        device.journal.write(device.now(), object, "callback " + std::string(holder) + "(" + arguments + ")");
    }
}

}  // namespace sim
