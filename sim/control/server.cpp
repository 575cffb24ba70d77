// Serves the control grammar on a Unix socket.
#include "sim/control/server.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <deque>
#include <mutex>
#include <optional>
#include <system_error>

#include "sim/control/property_stream.h"
#include "sim/core/unix_socket.h"

namespace sim {

namespace {

bool send_text(int connection, std::string const& text) {
    return send_all(connection, text.data(), text.size());
}

// Not that it sends no more: it may still read.
bool has_gone(int connection) {
    pollfd client{connection, 0, 0};
    return ::poll(&client, 1, 0) > 0 && (client.revents & (POLLHUP | POLLERR)) != 0;
}

// The lines that a client sends.
class LineReader {
public:
    explicit LineReader(int connection) : connection_(connection) {}

    // False at the end. A line that is longer than the limit is empty and too long.
    bool read(std::string& line, bool& too_long) {
        too_long = false;
        std::size_t end = input_.find('\n');
        while (end == std::string::npos) {
            if (input_.size() > Server::kLongestLine) {
                too_long = true;
                input_.clear();
            }
            char bytes[Server::kLongestLine];
            ssize_t const count = ::recv(connection_, bytes, sizeof bytes, 0);
            if (count == 0 || (count < 0 && errno != EINTR)) {
                return false;
            }
            input_.append(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
            end = input_.find('\n');
        }
        too_long = too_long || end > Server::kLongestLine;
        line = too_long ? std::string() : input_.substr(0, end);
        input_.erase(0, end + 1);
        return true;
    }

private:
    int const connection_;
    std::string input_;
};

// The journal on its way to one client. What the client does not take waits, up to kLongestQueue lines; beyond that
// lines are lost, and how many is said in their place.
class JournalStream {
public:
    // Throws where the host has no descriptor left.
    JournalStream(Device& device, StreamForm const& form) : device_(device), form_(form) {
        if (!wake_) {
            throw std::system_error(errno, std::generic_category());
        }
        auto const access = device_.access();
        follower_ =
            access->journal.follow([this](std::uint64_t sequence, Record const& record) { take(sequence, record); });
    }
    JournalStream(JournalStream const&) = delete;
    JournalStream& operator=(JournalStream const&) = delete;
    ~JournalStream() {
        auto const access = device_.access();
        access->journal.unfollow(follower_);
    }

    // Sends until the client has gone.
    void run(int connection) {
        while (true) {
            pollfd waited[] = {{connection, POLLIN, 0}, {wake_.get(), POLLIN, 0}};
            if (::poll(waited, 2, form_.every ? static_cast<int>(form_.every->count()) : -1) < 0 && errno != EINTR) {
                return;
            }
            char ignored[256];
            if (waited[0].revents != 0 && ::recv(connection, ignored, sizeof ignored, MSG_DONTWAIT) == 0) {
                return;
            }
            eventfd_t wakes;
            ::eventfd_read(wake_.get(), &wakes);
            while (auto const lines = next_lines()) {
                if (!send_text(connection, *lines)) {
                    return;
                }
            }
        }
    }

private:
    static constexpr std::size_t kLongestQueue = 1U << 16U;  // lines
    static constexpr std::size_t kAtOnce = 256;              // lines in one send

    std::string line_of(std::uint64_t sequence, Record const& record) const {
        return (form_.json ? record_json(sequence, record) : record_line(sequence, record)) + "\n";
    }

    void take(std::uint64_t sequence, Record const& record) {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (lines_.size() >= kLongestQueue) {
            last_lost_ = sequence;
            gap_.start = record.start;
            ++lost_;
            return;
        }
        tell_gap();
        lines_.push_back(line_of(sequence, record));
        if (!form_.every) {
            ::eventfd_write(wake_.get(), 1);
        }
    }

    // Says how many lines are missing here, if any.
    void tell_gap() {
        if (lost_ > 0) {
            gap_.text = std::to_string(lost_) + " lines, as they were not read in time";
            lines_.push_back(line_of(last_lost_, gap_));
            lost_ = 0;
        }
    }

    std::optional<std::string> next_lines() {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (lines_.empty()) {
            tell_gap();
        }
        if (lines_.empty()) {
            return std::nullopt;
        }
        std::string lines;
        for (std::size_t i = 0; i < kAtOnce && !lines_.empty(); ++i) {
            lines += lines_.front();
            lines_.pop_front();
        }
        return lines;
    }

    Device& device_;
    StreamForm const form_;
    Descriptor const wake_ = out_of_the_way(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    int follower_ = 0;
    std::mutex mutex_;  // guards what follows; taken with the device's lock held
    std::deque<std::string> lines_;
    std::uint64_t lost_ = 0;
    std::uint64_t last_lost_ = 0;  // its sequence number
    Record gap_{RecordKind::lost};
};

}  // namespace

void Server::refuse(int connection, std::string const& reason) {
    std::string const line = "error: " + reason + "\n";
    ::send(connection, line.data(), line.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void Server::serve(int connection) {
    LineReader reader(connection);
    std::optional<StreamForm> follow;  // the journal
    std::optional<WatchRequest> watch;
    Caller caller{device_, [&](std::string const& line) { send_text(connection, line + "\n"); },
                  [&](StreamForm const& form) { follow = form; }, programs_};
    caller.watch = [&](Words const& prefixes, StreamForm const& form) { watch = {prefixes, form}; };
    caller.gone = [connection] { return has_gone(connection); };
    std::string line;
    bool too_long = false;
    while (reader.read(line, too_long)) {
        Reply const reply = too_long ? Reply::error("line too long") : commands_.run(caller, line);
        std::optional<JournalStream> stream;
        std::optional<PropertyStream> changes;
        if (follow) {
            stream.emplace(device_, *follow);  // before the client is told that it follows
        }
        if (watch) {
            changes.emplace(device_, *watch);
        }
        if (!send_text(connection, reply.ok ? reply.text + "ok\n" : "error: " + reply.text + "\n")) {
            return;
        }
        if (stream) {
            stream->run(connection);
            return;
        }
        if (changes) {
            changes->run(connection);
            return;
        }
    }
}

}  // namespace sim
