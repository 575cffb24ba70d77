// The changes of properties on their way to one client.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "sim/control/command.h"

namespace sim {

// Which properties, see PropertyWatch. A line is "TIME NAME VALUE", the time in seconds with six decimals, or one JSON
// object with the members time, property, value and, of a choice, name.
struct WatchRequest {
    std::vector<std::string> prefixes;
    StreamForm form;
};

// Watches from its construction on. Of what the client does not take kLongestQueue lines wait; beyond that, only the
// last value of each property does.
class PropertyStream {
public:
    static constexpr std::size_t kLongestQueue = 1024;

    PropertyStream(Device& device, WatchRequest const& request);
    ~PropertyStream();

    // Sends until the client has gone.
    void run(int connection);

private:
    class Lines;
    std::unique_ptr<Lines> lines_;
};

}  // namespace sim
