// The way from this program to its device.
#include "sim/library/device_link.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sim/core/unix_socket.h"

namespace sim {

namespace {

char const* const kDirectory = "R47_SIM_DEVICE";

thread_local Connection* own_lane = nullptr;
thread_local unsigned int own_number = 0;

// Says hello, and answers why the device does not welcome it.
Error introduce(Connection& connection, Lane lane, std::uint64_t& program, Descriptor& file) {
    Hello const hello{table_version(), lane, program, ::program_invocation_short_name};
    std::string_view message;
    connection.send(message_of(MessageKind::hello, hello));  // where it is refused already, that says why
    if (!connection.receive(message, file)) {
        return "the device has gone";
    }
    Decoder bytes(message);
    MessageKind kind{};
    bytes.get(kind);
    if (kind == MessageKind::refusal) {
        Refusal refusal;
        bytes.get(refusal);
        return refusal.reason;
    }
    Welcome welcome{};
    bytes.get(welcome);
    program = welcome.program;
    return kind == MessageKind::welcome && bytes.complete() ? Error() : "what answers is no device";
}

}  // namespace

DeviceLink& DeviceLink::instance() {
    static DeviceLink& link = *new DeviceLink;
    return link;
}

std::unique_ptr<Connection> DeviceLink::open(Lane lane, Descriptor& file) {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (given_up_) {
        return nullptr;
    }
    char const* const directory = std::getenv(kDirectory);
    if (directory == nullptr) {
        give_up("no device: start the program with r47-sim run");
        return nullptr;
    }
    std::string const path = std::string(directory) + "/calls";
    Descriptor socket = connect_to(path);
    if (!socket) {
        give_up("no device at " + path + ": " + std::strerror(errno));
        return nullptr;
    }
    auto connection = std::make_unique<Connection>(std::move(socket));
    Error const error = introduce(*connection, lane, program_, file);
    if (!error.empty()) {
        give_up(path + ": " + error);
        return nullptr;
    }
    return connection;
}

std::unique_ptr<Connection> DeviceLink::take() {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (!idle_.empty()) {
            auto connection = std::move(idle_.back());
            idle_.pop_back();
            return connection;
        }
    }
    Descriptor none;
    return open(Lane::none, none);
}

void DeviceLink::give_back(std::unique_ptr<Connection> connection) {
    std::lock_guard<std::mutex> const lock(mutex_);
    idle_.push_back(std::move(connection));
}

void DeviceLink::lose(std::unique_ptr<Connection> connection) {
    std::lock_guard<std::mutex> const lock(mutex_);
    connection.reset();
    idle_.clear();
    give_up("the device has gone");
}

void DeviceLink::give_up(std::string const& reason) {
    if (!given_up_) {
        given_up_ = true;
        std::fprintf(stderr, "libhal: %s\n", reason.c_str());
    }
}

Exchange::Exchange(std::string const& message) : lane_(own_lane) {
    DeviceLink& link = DeviceLink::instance();
    if (lane_ == nullptr) {
        taken_ = link.take();
    }
    Connection* const connection = lane_ != nullptr ? lane_ : taken_.get();
    if (connection == nullptr) {
        return;
    }
    std::string_view bytes;
    MessageKind kind{};
    if (connection->send(message) && connection->receive(bytes)) {
        reply_ = Decoder(bytes);
        reply_.get(kind);
    }
    answered_ = kind == MessageKind::reply;
    if (!answered_ && taken_) {
        link.lose(std::move(taken_));
    }
}

Exchange::~Exchange() {
    if (taken_) {
        DeviceLink::instance().give_back(std::move(taken_));
    }
}

unsigned int thread_number() {
    static std::atomic<unsigned int> last{0};
    if (own_number == 0 && own_lane == nullptr) {
        own_number = ++last;
    }
    return own_number;
}

void enter_lane(Connection& connection) {
    own_lane = &connection;
}

}  // namespace sim
