// What the library keeps about each of its objects.
#include "sim/library/object.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include "sim/device/device.h"

namespace sim {

namespace {

int next_number() {
    static std::atomic<int> last{0};
    return ++last;
}

std::vector<std::string> copy(std::vector<char const*> const& paths) {
    std::vector<std::string> copies;
    copies.reserve(paths.size());
    for (char const* path : paths) {
        copies.emplace_back(path != nullptr ? path : "");
    }
    return copies;
}

bool all_present(Device const& device, std::vector<std::string> const& paths) {
    return std::all_of(paths.begin(), paths.end(), [&](std::string const& path) { return device.nodes.present(path); });
}

}  // namespace

Object::Object(std::vector<char const*> const& device_paths) : number(next_number()), paths(copy(device_paths)) {
    auto const lock = Device::instance().lock();
    if (!all_present(Device::instance(), paths)) {
        open_error = ENOENT;
    }
}

bool Object::ready() const {
    if (open_error != 0) {
        errno = open_error;
        return false;
    }
    if (!all_present(Device::instance(), paths)) {
        errno = ENODEV;
        return false;
    }
    return true;
}

}  // namespace sim
