// One end of a connection to a device's service, which says what it likes.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <string>

#include "sim/calls/connection.h"
#include "sim/core/unix_socket.h"

class RawProgram {
public:
    explicit RawProgram(std::string const& path) : connection_(sim::connect_to(path)) {}

    // What the device answers to a Hello: the program, or in `refusal` why not.
    std::uint64_t say_hello(sim::Lane lane = sim::Lane::none, std::uint64_t program = 0,
                            std::uint64_t version = sim::table_version(), std::string const& name = "raw") {
        send(message_of(sim::MessageKind::hello, sim::Hello{version, lane, program, name}));
        std::string_view message;
        if (!connection_.receive(message, file)) {
            return 0;
        }
        sim::Decoder bytes(message);
        sim::MessageKind kind{};
        bytes.get(kind);
        if (kind == sim::MessageKind::refusal) {
            sim::Refusal said;
            EXPECT_TRUE(bytes.get(said).complete());
            refusal = said.reason;
            return 0;
        }
        sim::Welcome welcome{};
        EXPECT_TRUE(bytes.get(welcome).complete());
        EXPECT_EQ(kind, sim::MessageKind::welcome);
        return welcome.program;
    }

    bool send(std::string const& message) { return connection_.send(message); }
    bool send_raw(std::string const& bytes) const {
        return sim::send_all(connection_.descriptor(), bytes.data(), bytes.size());
    }
    // No more to send; the device still answers.
    void finish() const { ::shutdown(connection_.descriptor(), SHUT_WR); }
    void shut_down() const { connection_.shut_down(); }

    template <typename Op, typename... Argument>
    static std::string call_of(unsigned int object, Argument const&... arguments) {
        return message_of(sim::MessageKind::call, sim::Call{Op::kId, object, 1}, typename Op::Arguments{arguments...});
    }
    // Calls, and answers the result; -99 where the device ended the connection instead.
    template <typename Op, typename... Argument>
    std::int64_t call(unsigned int object, Argument const&... arguments) {
        return send(call_of<Op>(object, arguments...)) ? result() : -99;
    }
    // Of the call that was sent.
    std::int64_t result() {
        std::string_view message;
        sim::CallReply reply{-99, 0, false, false};
        sim::MessageKind kind{};
        if (connection_.receive(message)) {
            sim::Decoder bytes(message);
            bytes.get(kind).get(reply);
            EXPECT_EQ(kind, sim::MessageKind::reply);
            error = reply.error;
        }
        return reply.result;
    }

    // The next event of a lane; its object is 0 where there is none.
    sim::Event next_event() {
        std::string_view message;
        sim::Event event{};
        sim::MessageKind kind{};
        if (connection_.receive(message)) {
            EXPECT_TRUE(sim::Decoder(message).get(kind).get(event).complete());
            EXPECT_EQ(kind, sim::MessageKind::event);
        }
        return event;
    }

    // Whether the device has ended the connection. Waits for that, or for a message.
    bool ended() {
        std::string_view message;
        return !connection_.receive(message);
    }

    std::string refusal;
    sim::Descriptor file;  // that came with the Welcome
    int error = 0;         // of the last call

private:
    sim::Connection connection_;
};
