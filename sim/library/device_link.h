// The way from this program to its device.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sim/calls/connection.h"

namespace sim {

// The device is the one whose directory the environment names in R47_SIM_DEVICE. Where there is none, where it has
// gone, or where it does not want this library, that is said once on standard error, and nobody is asked any more.
// Usable from any thread.
class DeviceLink {
public:
    // Of this process. Never destroyed: the program may call the library until its very end.
    static DeviceLink& instance();

    // A connection for the callbacks of a lane, and the file that came with its Welcome; null without a device.
    std::unique_ptr<Connection> open(Lane lane, Descriptor& file);
    // A connection that nobody else uses until it is given back; null without a device.
    std::unique_ptr<Connection> take();
    void give_back(std::unique_ptr<Connection> connection);
    // What take() gave has lost its device.
    void lose(std::unique_ptr<Connection> connection);

private:
    void give_up(std::string const& reason);

    std::mutex mutex_;
    std::vector<std::unique_ptr<Connection>> idle_;
    std::uint64_t program_ = 0;  // as the device calls it
    bool given_up_ = false;
};

// The exchange of one message for another, over the lane where the calling thread is one of callbacks.
class Exchange {
public:
    explicit Exchange(std::string const& message);
    Exchange(Exchange const&) = delete;
    Exchange& operator=(Exchange const&) = delete;
    ~Exchange();

    // Whether there is a reply, whose parts the decoder has.
    bool answered() const { return answered_; }
    Decoder& reply() { return reply_; }

private:
    Connection* lane_;
    std::unique_ptr<Connection> taken_;
    Decoder reply_{""};
    bool answered_ = false;
};

// The number of the calling thread in the journal: 0 for those of callbacks, the others from 1.
unsigned int thread_number();
// From now on the calling thread is one of callbacks, with this connection.
void enter_lane(Connection& connection);

}  // namespace sim
