// A program that uses the device.
#include "sim/service/program.h"

namespace sim {

EventLane* Program::lane(Lane lane) {
    switch (lane) {
        case Lane::hub:
            return &hub_lane;
        case Lane::button:
            return &button_lane;
        case Lane::none:
            break;
    }
    return nullptr;
}

std::shared_ptr<ServedObject> Program::object(unsigned int number) const {
    auto const found = objects_.find(number);
    return found != objects_.end() ? found->second : nullptr;
}

void Program::add(std::shared_ptr<ServedObject> object) {
    unsigned int const number = object->number();
    objects_[number] = std::move(object);
}

void Program::remove(ServedObject& object) {
    auto const removed = objects_.extract(object.number());
    if (!removed.empty()) {
        object.leave();
    }
}

void Program::release_objects() {
    while (!objects_.empty()) {
        remove(*objects_.rbegin()->second);
    }
}

void Program::end() {
    ended_ = true;
    release_objects();
    device_.timeline.wake();
}

}  // namespace sim
