// The changes of properties on their way to one client.
#include "sim/control/property_stream.h"

#include <poll.h>
#include <sys/socket.h>

#include <mutex>
#include <vector>

#include "sim/core/text.h"
#include "sim/core/unix_socket.h"
#include "sim/device/property_watch.h"
#include "sim/device/schema.h"

namespace sim {

class PropertyStream::Lines {
public:
    Lines(Device& device, WatchRequest const& request)
        : json_(request.form.json),
          pause_(static_cast<int>(request.form.every.value_or(PropertyWatch::kSpacing).count())),
          watch_(device, request.prefixes,
                 request.form.every ? PropertyWatch::Manner::samples : PropertyWatch::Manner::changes,
                 [this](Time time, std::string const& name, Property const& property, Value const& value) {
                     return put(time, name, property, value);
                 }) {}

    void run(int connection) {
        while (true) {
            watch_.catch_up();
            std::string const lines = take();
            if (!lines.empty() && !send_all(connection, lines.data(), lines.size())) {
                return;
            }
            // A line waits no longer than that: it need not wake anybody.
            pollfd client{connection, POLLIN, 0};
            char ignored[256];
            if (::poll(&client, 1, pause_) > 0 && ::recv(connection, ignored, sizeof ignored, MSG_DONTWAIT) <= 0) {
                return;
            }
        }
    }

private:
    bool put(Time time, std::string const& name, Property const& property, Value const& value) {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (lines_.size() >= kLongestQueue) {
            return false;
        }
        lines_.push_back(json_ ? change_json(time, name, property, value)
                               : seconds(time) + " " + name + " " + printable(value_with_name(property, value)) + "\n");
        return true;
    }

    std::string take() {
        std::lock_guard<std::mutex> const lock(mutex_);
        std::string all;
        for (std::string const& line : lines_) {
            all += line;
        }
        lines_.clear();
        return all;
    }

    bool const json_;
    int const pause_;   // ms between two looks
    std::mutex mutex_;  // guards what follows; taken with the device's lock held
    std::vector<std::string> lines_;
    PropertyWatch watch_;  // calls put()
};

PropertyStream::PropertyStream(Device& device, WatchRequest const& request)
    : lines_(std::make_unique<Lines>(device, request)) {}

PropertyStream::~PropertyStream() = default;

void PropertyStream::run(int connection) {
    lines_->run(connection);
}

}  // namespace sim
