// What the pages are told of the device: its state as differences, and its journal.
#include "sim/panel/feed.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "sim/control/control_link.h"
#include "sim/control/device_directory.h"
#include "sim/core/text.h"
#include "sim/core/thread.h"

namespace sim {

namespace {

constexpr std::chrono::seconds kPatience{2};         // with a device that does not answer
constexpr std::chrono::milliseconds kTryAgain{500};  // to find a device that has gone
// How old the lists of nodes, faults and programs get, where the journal has told something since, and where it has
// not.
constexpr std::chrono::milliseconds kListSpacing{200};
constexpr std::chrono::milliseconds kOldestList{1000};

ControlLink::Deadline after(std::chrono::milliseconds time) {
    return std::chrono::steady_clock::now() + time;
}

}  // namespace

Feed::~Feed() {
    stop();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void Feed::start() {
    thread_ = start_thread_without_signals("panel-feed", [this] { run(); });
}

void Feed::stop() {
    std::lock_guard<std::mutex> const lock(mutex_);
    stopping_ = true;
    changed_.notify_all();
}

std::unique_ptr<Feed::Page> Feed::join() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (pages_ == kMostPages) {
            return nullptr;
        }
        ++pages_;
        changed_.notify_all();
    }
    return std::make_unique<Page>(*this);
}

void Feed::run() {
    while (true) {
        {
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait(lock, [this] { return pages_ > 0 || stopping_; });
            if (stopping_) {
                return;
            }
        }
        Error const lost = look();
        if (!lost.empty()) {
            publish(lost_device(lost), {});
            wait_to_try_again();
        }
    }
}

// At one device, until nobody looks any more; or until it has gone, or where there is none, which it answers.
Error Feed::look() {
    std::string directory;
    Error error = find_device(device_, directory);
    if (!error.empty()) {
        return error;
    }
    ControlLink lists(directory);
    ControlLink changes(directory);
    ControlLink journal(directory);
    std::string const every = " --json --every " + std::to_string(kPeriod.count()) + "ms";
    Snapshot now;
    // Read when the changes are followed already, so that none is missed in between.
    for (Reply const& reply :
         {changes.ask("watch" + every, after(kPatience)), journal.ask("journal follow" + every, after(kPatience))}) {
        error = error.empty() && !reply.ok ? reply.text : error;
    }
    error = error.empty() ? read_snapshot(lists, after(kPatience), now) : error;
    auto listed = std::chrono::steady_clock::now();
    bool is_told_more = false;  // by the journal, of what the lists may have
    while (error.empty() && is_looked_at()) {
        auto const next = after(kPeriod);
        take_changes(changes.lines(), now);
        std::vector<std::string> lines = journal.lines();
        is_told_more = is_told_more || !lines.empty();
        auto const age = std::chrono::steady_clock::now() - listed;
        if (age >= (is_told_more ? kListSpacing : kOldestList)) {
            error = read_lists(lists, after(kPatience), now);
            listed = std::chrono::steady_clock::now();
            is_told_more = false;
        }
        if (error.empty() && (!changes || !journal)) {
            error = "the device ended";
        }
        if (error.empty()) {
            publish(now, std::move(lines));
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait_until(lock, next, [this] { return stopping_; });
        }
    }
    return error;
}

bool Feed::is_looked_at() {
    std::lock_guard<std::mutex> const lock(mutex_);
    return pages_ > 0 && !stopping_;
}

void Feed::publish(Snapshot const& snapshot, std::vector<std::string> lines) {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (!snapshot_ || *snapshot_ != snapshot) {
        snapshot_ = std::make_shared<Snapshot const>(snapshot);
    }
    for (std::string& line : lines) {
        lines_.push_back(std::move(line));
        ++next_line_;
    }
    while (lines_.size() > kKeptLines) {
        lines_.pop_front();
    }
    changed_.notify_all();
}

void Feed::wait_to_try_again() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, kTryAgain, [this] { return stopping_; });
}

Feed::Page::Page(Feed& feed) : feed_(feed) {
    std::lock_guard<std::mutex> const lock(feed_.mutex_);
    next_line_ = feed_.next_line_ - std::min(feed_.lines_.size(), kMostLines);
    // What nobody looked at since is old: the page waits for the next.
    if (feed_.pages_ == 1) {
        feed_.snapshot_ = nullptr;
    }
}

Feed::Page::~Page() {
    std::lock_guard<std::mutex> const lock(feed_.mutex_);
    --feed_.pages_;
}

std::optional<std::string> Feed::Page::next(std::chrono::milliseconds longest) {
    std::shared_ptr<Snapshot const> now;
    std::string messages;
    {
        std::unique_lock<std::mutex> lock(feed_.mutex_);
        feed_.changed_.wait_for(lock, longest, [this] {
            return feed_.stopping_ || (feed_.snapshot_ && (feed_.snapshot_ != told_ || feed_.next_line_ != next_line_));
        });
        if (feed_.stopping_) {
            return std::nullopt;
        }
        now = feed_.snapshot_;
        messages = journal();
    }
    if (now && now != told_) {
        static Snapshot const nothing = Snapshot::object();
        Snapshot const differences = difference(told_ ? *told_ : nothing, *now);
        told_ = now;
        if (!differences.empty()) {
            messages = "event: state\ndata: " + differences.dump(-1, ' ', false, Snapshot::error_handler_t::replace) +
                       "\n\n" + messages;
        }
    }
    return messages;
}

// With the feed's lock held.
std::string Feed::Page::journal() {
    std::uint64_t const first = feed_.next_line_ - std::min(feed_.lines_.size(), kMostLines);
    std::uint64_t const skipped = first - std::min(first, next_line_);
    next_line_ = std::max(next_line_, first);
    if (next_line_ == feed_.next_line_) {
        return {};
    }
    std::string message = "event: journal\ndata: {\"skipped\":" + std::to_string(skipped) + ",\"lines\":[";
    for (auto line = feed_.lines_.end() - static_cast<std::ptrdiff_t>(feed_.next_line_ - next_line_);
         line != feed_.lines_.end(); ++line) {
        message += (message.back() == '[' ? "" : ",") + *line;
    }
    next_line_ = feed_.next_line_;
    return message + "]}\n\n";
}

}  // namespace sim
