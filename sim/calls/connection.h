// A connection between the library and the device: whole messages over a stream socket.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "sim/calls/codec.h"
#include "sim/calls/messages.h"
#include "sim/core/descriptor.h"

namespace sim {

// The longest message: an upload of an image, which no sensor hub takes at more than a few hundred kilobytes.
constexpr std::size_t kLongestMessage = 4U << 20U;

// Used by one thread at a time, but for shut_down(), which may come from any.
class Connection {
public:
    explicit Connection(Descriptor socket) : own_(std::move(socket)), socket_(own_.get()) {}
    // On a socket that somebody else closes.
    explicit Connection(int socket) : socket_(socket) {}
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    // These block, and answer false when the other end has gone or, for receive(), sent what is no message.
    bool send(std::string const& message);
    // Gives the other end a copy of `file`, if there is one.
    bool send(std::string const& message, Descriptor const& file);
    // `message` stays valid until the next receive().
    bool receive(std::string_view& message);
    // `file` is what came with it, if something did.
    bool receive(std::string_view& message, Descriptor& file);
    // Does not block: where the other end leaves too much unread, the connection ends.
    void send_at_once(std::string const& message);
    // Ends whatever waits at either end.
    void shut_down() const;

    int descriptor() const { return socket_; }

private:
    bool receive(std::string_view& message, Descriptor* file);

    Descriptor const own_;
    int const socket_;
    std::string input_;
    std::size_t taken_ = 0;  // of input_, by the last message
};

// A message of its kind and its parts.
template <typename... Part>
std::string message_of(MessageKind kind, Part const&... parts) {
    Encoder encoder;
    encoder.put(kind);
    (encoder.put(parts), ...);
    return encoder.bytes();
}

}  // namespace sim
