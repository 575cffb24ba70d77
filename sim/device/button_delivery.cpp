// The push button of the device and the programs that watch its interrupt line.
#include "sim/device/button_delivery.h"

#include <algorithm>

#include "sim/device/device.h"

namespace sim {

namespace {

// Where one of these is, the device is an R47.
constexpr char const* kR47Nodes[] = {"/dev/r47-autofocus-driver", "/dev/r47-illumination-driver",
                                     "/dev/r47-rtu-driver"};

}  // namespace

void ButtonDelivery::remove(ContactListener& listener) {
    listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), &listener), listeners_.end());
}

bool ButtonDelivery::press(Time now) {
    if (button_.pressed() || !moves_.empty()) {
        return false;
    }
    carry_out({now, true});
    return true;
}

bool ButtonDelivery::release(Time now) {
    bool const ends_press = !moves_.empty();
    device_->timeline.cancel(event_);
    moves_.clear();
    if (button_.pressed()) {
        carry_out({now, false});
        return true;
    }
    return ends_press;
}

bool ButtonDelivery::press_for(Time now, Duration length, Duration bounce) {
    if (button_.pressed() || !moves_.empty()) {
        return false;
    }
    for (Move const& first : {Move{now, true}, Move{now + length, false}}) {
        moves_.push_back(first);
        if (bounce > Duration(0)) {
            moves_.push_back({first.due + bounce, !first.closes});
            moves_.push_back({first.due + 2 * bounce, first.closes});
        }
    }
    make_moves(now);
    return true;
}

void ButtonDelivery::carry_out(Move const& move) {
    if (move.closes) {
        button_.press(move.due);
    } else {
        button_.release();
    }
    Duration const lasts = moves_.empty() ? kLongestDuration : moves_.front().due - move.due;
    for (ContactListener* const listener : listeners_) {
        listener->contact_moved(move.due, move.closes, lasts);
    }
}

// Each at its own time, however late the device gets to it.
void ButtonDelivery::make_moves(Time now) {
    while (!moves_.empty() && moves_.front().due <= now) {
        Move const due = moves_.front();
        moves_.pop_front();
        carry_out(due);
    }
    if (!moves_.empty()) {
        event_ = device_->timeline.at(moves_.front().due, [this] {
            auto const device = device_->access();
            make_moves(device.now());
        });
    }
}

long button_line(Nodes const& nodes) {
    bool const is_r47 =
        std::any_of(std::begin(kR47Nodes), std::end(kR47Nodes), [&](char const* node) { return nodes.present(node); });
    return is_r47 ? PushButton::kR47Line : PushButton::kOtherLine;
}

}  // namespace sim
