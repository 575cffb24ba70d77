// The journal: one line for each call of the library and each callback, off unless someone reads it.
#include "sim/device/journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "sim/core/descriptor.h"

namespace sim {

Journal::~Journal() {
    if (file_ >= 0) {
        ::close(file_);
    }
}

Error Journal::open(std::string const& path) {
    int const fd = move_out_of_the_way(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    if (fd < 0) {
        return "cannot write the journal " + path + ": " + std::strerror(errno);
    }
    std::lock_guard<std::mutex> const lock(mutex_);
    if (file_ >= 0) {
        ::close(file_);
        --readers_;
    }
    file_ = fd;
    ++readers_;
    return {};
}

int Journal::follow(std::function<void(std::string const& line)> follower) {
    std::lock_guard<std::mutex> const lock(mutex_);
    followers_.emplace(next_id_, std::move(follower));
    ++readers_;
    return next_id_++;
}

void Journal::unfollow(int id) {
    std::lock_guard<std::mutex> const lock(mutex_);
    readers_ -= static_cast<int>(followers_.erase(id));
}

void Journal::write(Time time, int object, std::string const& text) {
    std::string const line = seconds(time) + " " + std::to_string(object) + " " + text + "\n";
    std::lock_guard<std::mutex> const lock(mutex_);
    if (file_ >= 0) {
        // A full disk must not change what the program under test sees, so a failure passes.
        [[maybe_unused]] auto const written = ::write(file_, line.data(), line.size());
    }
    for (auto const& [id, follower] : followers_) {
        follower(line);
    }
}

}  // namespace sim
