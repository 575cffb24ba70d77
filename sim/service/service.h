// Serves the device to the programs that use it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sim/calls/connection.h"
#include "sim/core/socket_server.h"
#include "sim/device/device.h"
#include "sim/service/program.h"

namespace sim {

// What people want to know of a program.
struct ProgramInfo {
    std::string name;  // "NAME.NUMBER"
    int pid;           // as the device sees it
    std::size_t objects;
};

// Each connection is served by a thread of its own; bytes that are no messages end it, and hurt nobody else. When a
// program's last connection has ended, what it had opened is released, whatever it had asked for last.
class Service {
public:
    // Of all programs together, see SocketServer; what finds no place is told so.
    static constexpr std::size_t kMostConnections = 512;

    // Makes the device's stepped clock wait for the programs' callbacks.
    explicit Service(Device& device);
    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;
    // As stop().
    ~Service();

    // Listens at `path`. Once.
    Error start(std::string const& path);
    // Ends all connections and the device's time, and returns when nothing of them runs any more.
    void stop();

    // In the order in which they connected, as what follows.
    std::vector<ProgramInfo> programs();
    // Whom a step of the clock waits for, one line without line end each.
    std::vector<std::string> waited_for();
    // Returns when no program is connected, or after `longest`; whether none is.
    bool wait_until_unused(std::chrono::milliseconds longest);

private:
    // One connection.
    struct Serving {
        explicit Serving(int socket) : connection(socket) {}

        Connection connection;
        std::shared_ptr<Program> program;
        EventLane* lane = nullptr;
        bool has_gone = false;
    };

    void serve(int connection);
    Error welcome(Serving& serving, Decoder& bytes);
    bool take(Serving& serving, std::string_view message);
    CallbackTurn begin(Serving& serving);
    void farewell(Device::Access const& device, Serving& serving);
    void notice_end(int connection);
    std::shared_ptr<Program> find(std::uint64_t key) const;
    bool at_rest() const;

    Device& device_;
    SocketServer server_;
    // With the device's lock held:
    std::vector<std::shared_ptr<Program>> programs_;
    std::map<int, Serving*> serving_;  // by the connection's descriptor
    int last_program_ = 0;
    bool stopping_ = false;
};

}  // namespace sim
