// The samples of one gyro_t on their way to those who listen: its delegates, alarms and callback records.
#include "sim/device/sample_feed.h"

#include <algorithm>

#include "sim/device/device.h"

namespace sim {

SampleFeed::ListenerId SampleFeed::listen(From from, Listener listener) {
    auto subscription = std::make_shared<Subscription>(false);
    std::lock_guard<std::mutex> const lock(mutex_);
    entries_.push_back({from, subscription, std::move(listener)});
    return subscription;
}

void SampleFeed::ignore(ListenerId const& listener) {
    listener->close();
    std::lock_guard<std::mutex> const lock(mutex_);
    auto const is_it = [&](Entry const& entry) { return entry.subscription == listener; };
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(), is_it), entries_.end());
}

void SampleFeed::hold(bool held) {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        held_ = held;
        released_ = released_ || !held;
    }
    subscription_->hold(held);
}

void SampleFeed::close() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        held_ = true;
    }
    subscription_->close();
}

void SampleFeed::publish(Sample const& sample) {
    subscription_->deliver([&] {
        for (Entry const& entry : entries()) {
            entry.subscription->deliver([&] {
                if (takes(entry)) {
                    entry.listener(sample);
                }
            });
        }
    });
}

std::vector<SampleFeed::Entry> SampleFeed::entries() {
    std::lock_guard<std::mutex> const lock(mutex_);
    return entries_;
}

// A listener before may have held the feed.
bool SampleFeed::takes(Entry const& entry) {
    std::lock_guard<std::mutex> const lock(mutex_);
    return !held_ && (entry.from == From::now || released_);
}

void SampleDelivery::add(std::shared_ptr<SampleFeed> feed) {
    feeds_.push_back(std::move(feed));
}

void SampleDelivery::remove(std::shared_ptr<SampleFeed> const& feed) {
    feeds_.erase(std::remove(feeds_.begin(), feeds_.end(), feed), feeds_.end());
}

void SampleDelivery::schedule() {
    auto const next = device_.hub.next_delivery();
    if (next == due_) {
        return;
    }
    if (due_) {
        device_.timeline.cancel(event_);
    }
    due_ = next;
    if (next) {
        event_ = device_.timeline.at(*next, [this] { deliver(); });
    }
}

void SampleDelivery::deliver() {
    std::vector<SensorHub::Sample> samples;
    std::vector<std::shared_ptr<SampleFeed>> feeds;
    {
        auto const lock = device_.lock();
        due_.reset();
        samples = device_.hub.take_samples(device_.now());
        std::copy_if(feeds_.begin(), feeds_.end(), std::back_inserter(feeds),
                     [](auto const& feed) { return feed->reachable(); });
        schedule();
    }
    for (SensorHub::Sample const& sample : samples) {
        for (auto const& feed : feeds) {
            feed->publish(sample);
        }
    }
}

}  // namespace sim
