// What the pages are told of the device: its state as differences, and its journal.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sim/panel/snapshot.h"

namespace sim {

// Looks at the device for as long as there are pages, at most 20 times a second. Looks for it again where it has gone.
class Feed {
public:
    static constexpr std::size_t kMostPages = 16;
    static constexpr std::chrono::milliseconds kPeriod{50};
    static constexpr std::size_t kKeptLines = 2000;  // of the journal, for pages that are slow or come later
    static constexpr std::size_t kMostLines = 200;   // of the journal in one message

    class Page;

    // `device`: its name or directory; empty: the only one of this user.
    explicit Feed(std::string device) : device_(std::move(device)) {}
    Feed(Feed const&) = delete;
    Feed& operator=(Feed const&) = delete;
    // All pages must have gone.
    ~Feed();

    // Looks from now on, on a thread of its own. Once.
    void start();
    // A page that looks, until it is destroyed; null where there are too many.
    std::unique_ptr<Page> join();
    // Lets no page wait any more.
    void stop();
    std::string const& device() const { return device_; }

private:
    void run();
    Error look();
    bool is_looked_at();
    void publish(Snapshot const& snapshot, std::vector<std::string> lines);
    void wait_to_try_again();

    std::string const device_;
    std::mutex mutex_;  // guards what follows
    std::condition_variable changed_;
    bool stopping_ = false;
    std::size_t pages_ = 0;
    std::shared_ptr<Snapshot const> snapshot_;  // null: nobody has looked yet
    std::deque<std::string> lines_;             // of the journal, as JSON
    std::uint64_t next_line_ = 0;               // number of the line that comes
    std::thread thread_;
};

// What one page has been told already. For one thread.
class Feed::Page {
public:
    explicit Page(Feed& feed);
    Page(Page const&) = delete;
    Page& operator=(Page const&) = delete;
    ~Page();

    // Messages of server-sent events: "state" with differences, "journal" with an object of "lines" and of how many
    // were "skipped" before them. Empty where nothing has changed for so long; nothing once the feed has stopped.
    // Blocks.
    std::optional<std::string> next(std::chrono::milliseconds longest);

private:
    std::string journal();

    Feed& feed_;
    std::shared_ptr<Snapshot const> told_;
    std::uint64_t next_line_;
};

}  // namespace sim
