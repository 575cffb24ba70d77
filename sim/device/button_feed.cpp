// The presses of the push button on their way to the records of one button_t.
#include "sim/device/button_feed.h"

#include <algorithm>

#include "sim/device/device.h"

namespace sim {

namespace {

constexpr std::size_t kLongestQueue = 16;  // edges, as many as the kernel keeps of a line

// Where one of these is, the device is an R47.
constexpr char const* kR47Nodes[] = {"/dev/r47-autofocus-driver", "/dev/r47-illumination-driver",
                                     "/dev/r47-rtu-driver"};

template <typename HalRecords>
void copy_records(HalRecords const& from, ButtonEvents::Records& to) {
    for (std::size_t i = 0; i < ButtonEvents::kRecords; ++i) {
        to[i] = {std::chrono::milliseconds(from[i].hold_time_ms), static_cast<bool>(from[i].action)};
    }
}

}  // namespace

ButtonFeed::ButtonFeed(Timeline& timeline, std::shared_ptr<Subscription> subscription, Owner owner, Duration debounce)
    : timeline_(timeline), subscription_(std::move(subscription)), owner_(std::move(owner)), events_(debounce) {}

void ButtonFeed::hold(bool held) {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        held_ = held;
    }
    subscription_->hold(held);
    if (!held) {
        wake(timeline_.now());
    }
}

void ButtonFeed::close() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        held_ = true;
    }
    subscription_->close();
}

void ButtonFeed::edge(Time time, bool closes) {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (edges_.size() < kLongestQueue) {
            edges_.push_back({time, closes});
        }
    }
    wake(time);
}

void ButtonFeed::wake(Time due) {
    timeline_.at(due, [self = shared_from_this()] { self->process(); });
}

void ButtonFeed::process() {
    subscription_->deliver([this] {
        ButtonEvents::Event event{};
        while (next_event(event)) {
            auto const& records = event.press ? owner_.button->press_records : owner_.button->release_records;
            auto const action = records[event.index].action;
            if (action) {
                owner_.note(event);
                action();  // may destroy the button
            }
        }
    });
}

// The records are read here alone, where nothing is held.
bool ButtonFeed::next_event(ButtonEvents::Event& event) {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (held_) {
        return false;
    }
    while (!edges_.empty()) {
        digest(edges_.front());
        edges_.pop_front();
    }
    queue(events_.advance(timeline_.now()));
    if (ready_.empty()) {
        if (auto const due = events_.next_due()) {
            wake(*due);
        }
        return false;
    }
    event = ready_.front();
    ready_.pop_front();
    return true;
}

void ButtonFeed::digest(Edge const& edge) {
    ButtonEvents::Records records;
    if (edge.closes) {
        copy_records(owner_.button->press_records, records);
        events_.press(edge.time, records);
    } else {
        copy_records(owner_.button->release_records, records);
        queue(events_.release(edge.time, records));
    }
}

void ButtonFeed::queue(std::vector<ButtonEvents::Event> const& events) {
    ready_.insert(ready_.end(), events.begin(), events.end());
}

void ButtonDelivery::add(std::shared_ptr<ButtonFeed> feed) {
    feeds_.push_back(std::move(feed));
}

void ButtonDelivery::remove(std::shared_ptr<ButtonFeed> const& feed) {
    feeds_.erase(std::remove(feeds_.begin(), feeds_.end(), feed), feeds_.end());
}

long ButtonDelivery::line() const {
    bool const is_r47 = std::any_of(std::begin(kR47Nodes), std::end(kR47Nodes),
                                    [this](char const* node) { return device_.nodes.present(node); });
    return is_r47 ? PushButton::kR47Line : PushButton::kOtherLine;
}

bool ButtonDelivery::press() {
    bool const changed = device_.button.press(device_.now());
    if (changed) {
        tell(true);
    }
    return changed;
}

bool ButtonDelivery::release() {
    device_.timeline.cancel(release_event_);
    bool const changed = device_.button.release();
    if (changed) {
        tell(false);
    }
    return changed;
}

bool ButtonDelivery::press_for(Duration length) {
    if (!press()) {
        return false;
    }
    release_event_ = device_.timeline.at(device_.now() + length, [this] {
        auto const lock = device_.lock();
        release();
    });
    return true;
}

void ButtonDelivery::describe(Properties& properties) {
    properties.add("button.pressed", "whether the button is pressed", [this] { return device_.button.pressed(); });
    properties.add("button.held", "how long it has been held, s; 0: not pressed",
                   [this] { return static_cast<double>(device_.button.held(device_.now()).count()) / 1e6; });
    properties.add("button.line", "interrupt line that it is wired to", [this] { return line(); });
}

void ButtonDelivery::tell(bool closes) {
    for (auto const& feed : feeds_) {
        if (feed->sees()) {
            feed->edge(device_.now(), closes);
        }
    }
}

}  // namespace sim
