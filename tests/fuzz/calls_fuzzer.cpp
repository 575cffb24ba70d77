// Fuzzer of the codec and of the device's service: any bytes read as every type that goes over a connection, and
// programs that say to a device of their own what no library says.
//
// What is read whole, written again, is the same bytes; whatever the programs send, one that behaves is served all the
// while, and when they have gone nothing of theirs is left. Each line of an input is an action of one of four
// connections, and begins with a letter and the connection:
//   h0 LANE [P]                     Hello (LANE 0 to 2 and beyond), for the program of connection P
//   c0 OPERATION OBJECT [NUMBER]... a call, the numbers as its arguments
//   m0 BYTES                        a message of these bytes
//   r0 BYTES                        the bytes alone
//   d0, b0, q0 LANE                 Done, Begin, Quiet
//   x0                              ends the connection, which is another from then on
//   s MS                            steps the clock, beside all else
//   !N                              what befalls the device
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sim/calls/connection.h"
#include "sim/calls/operations.h"
#include "sim/control/command.h"
#include "sim/core/unix_socket.h"
#include "sim/models/firmware_image.h"
#include "sim/service/service.h"
#include "tests/support/require.h"

namespace {

using sim::MessageKind;

template <typename T>
void check_codec(std::string const& bytes) {
    auto value = std::make_unique<T>();  // some are large
    sim::Decoder decoder(bytes);
    if (decoder.get(*value).complete()) {
        require(sim::Encoder().put(*value).bytes() == bytes, "what is read whole is written as it was");
    }
}

void check_codec(std::string const& bytes) {
    check_codec<sim::Hello>(bytes);
    check_codec<sim::Welcome>(bytes);
    check_codec<sim::Refusal>(bytes);
    check_codec<sim::Call>(bytes);
    check_codec<sim::Quiet>(bytes);
    check_codec<sim::CallReply>(bytes);
    check_codec<sim::Event>(bytes);
    check_codec<sim::Done>(bytes);
#define CHECK(class_name, operation)                                       \
    check_codec<sim::operations::class_name::operation::Arguments>(bytes); \
    check_codec<sim::operations::class_name::operation::Results>(bytes);
#define CONSTRUCTOR(class_name, arguments) CHECK(class_name, constructor)
#define DESTRUCTOR(class_name) CHECK(class_name, destructor)
#define OPERATION(class_name, operation, result, arguments, results) CHECK(class_name, operation)
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
#undef CHECK
}

// Arguments out of the numbers of a line, one after the other; 1 when there are no more.
class ArgumentSource {
public:
    explicit ArgumentSource(std::istream& words) : words_(words) {}

    template <typename T>
    void fill(T& value) {
        if constexpr (sim::is_record<T>::value) {
            std::apply([&](auto&... fields) { (fill(fields), ...); }, sim::Fields<T>::of(value));
        } else if constexpr (std::is_array_v<T>) {
            for (auto& element : value) {
                fill(element);
            }
        } else if constexpr (std::is_same_v<T, bool>) {
            value = (next() & 1) != 0;
        } else if constexpr (std::is_same_v<T, float>) {
            auto const bits = static_cast<std::uint32_t>(next());
            value = static_cast<float>(bits);
            if (bits > 100000) {
                std::memcpy(&value, &bits, sizeof value);  // any other, such as none at all
            }
        } else {
            value = static_cast<T>(next());
        }
    }
    void fill(std::string& text) { text = path(); }
    void fill(sim::Text& text) { text = path(); }
    void fill(sim::ObjectNumber& object) { object.number = static_cast<unsigned int>(next()); }
    void fill(sim::FunctionGiven& function) { function.given = (next() & 1) != 0; }
    template <typename T>
    void fill(sim::Hidden<T>& hidden) {
        fill(hidden.value);
    }
    void fill(sim::Hidden<sim::Text>& image) {
        image.value = sim::make_firmware_image({sim::HubVariant::bhi260ap, static_cast<std::uint16_t>(next())});
    }
    template <typename Key, typename T>
    void fill(std::map<Key, T>& map) {
        map[static_cast<Key>(next())] = static_cast<T>(next());
    }

private:
    std::uint64_t next() {
        std::uint64_t number = 1;
        return words_ >> number ? number : 1;
    }
    std::string path() {
        auto const& files = sim::device_files();
        std::uint64_t const number = next();
        return number < files.size() ? files[number].path : std::to_string(number);
    }

    std::istream& words_;
};

template <typename Op>
std::string arguments_of(std::istream& words) {
    typename Op::Arguments arguments{};
    ArgumentSource source(words);
    std::apply([&](auto&... each) { (source.fill(each), ...); }, arguments);
    return sim::Encoder().put(arguments).bytes();
}

using ArgumentWriter = std::string (*)(std::istream&);

// By OperationId.
constexpr ArgumentWriter kArgumentWriters[] = {
#define CONSTRUCTOR(class_name, arguments) &arguments_of<sim::operations::class_name::constructor>,
#define DESTRUCTOR(class_name) &arguments_of<sim::operations::class_name::destructor>,
#define OPERATION(class_name, operation, result, arguments, results) \
    &arguments_of<sim::operations::class_name::operation>,
#include "sim/calls/operation_table.def"
#undef CONSTRUCTOR
#undef DESTRUCTOR
#undef OPERATION
};

// Nothing for a name that is none.
std::string call_of(std::istream& words) {
    std::string name;
    unsigned int object = 0;
    words >> name >> object;
    for (std::size_t place = 0; place < sim::kOperations; ++place) {
        if (sim::kOperationInfos[place].name == name) {
            sim::Call const call{static_cast<sim::OperationId>(place), object, 1};
            return message_of(MessageKind::call, call) + kArgumentWriters[place](words);
        }
    }
    return {};
}

constexpr char const* kEvents[] = {
    "press 600ms",
    "button down",
    "tilt 0 90 0",
    "fault add *::get_* delay 5",
    "fault add *~* delay 5",
    "fault add * status -1 skip 3",
    "fault add * value 1,2,3",
    "node remove /dev/i2c-2",
    "node remove /dev/gpiochip1",
    "fault clear",
};

// A directory for the sockets of this process.
std::string const& socket_path() {
    static std::string const path = [] {
        std::string name = (std::filesystem::temp_directory_path() / "fuzz-calls-XXXXXX").string();
        require(::mkdtemp(name.data()) != nullptr, "there is a temporary directory");
        return name + "/calls";
    }();
    return path;
}

class Client {
public:
    Client() : connection_(sim::connect_to(socket_path())) {}

    void say_hello(std::uint64_t lane, std::uint64_t program) {
        connection_.send(message_of(MessageKind::hello,
                                    sim::Hello{sim::table_version(), static_cast<sim::Lane>(lane), program, "fuzz"}));
        std::string_view message;
        MessageKind kind{};
        sim::Welcome welcome{};
        if (!said_hello_ && connection_.receive(message)) {
            sim::Decoder(message).get(kind).get(welcome);
            program_ = kind == MessageKind::welcome ? welcome.program : 0;
        }
        said_hello_ = true;
    }
    void send(std::string const& message) { connection_.send(message); }
    void send_raw(std::string const& bytes) {
        said_hello_ = true;
        sim::send_all(connection_.descriptor(), bytes.data(), bytes.size());
    }
    void finish() const { ::shutdown(connection_.descriptor(), SHUT_WR); }
    int descriptor() const { return connection_.descriptor(); }
    std::uint64_t program() const { return program_; }

    // As a library does it; the result.
    template <typename Op>
    std::int64_t call(unsigned int object, typename Op::Arguments const& arguments) {
        connection_.send(message_of(MessageKind::call, sim::Call{Op::kId, object, 1}, arguments));
        std::string_view message;
        require(connection_.receive(message), "a program that behaves is answered");
        MessageKind kind{};
        sim::CallReply reply{};
        sim::Decoder(message).get(kind).get(reply);
        require(kind == MessageKind::reply, "a call is answered by a reply");
        return reply.result;
    }

private:
    sim::Connection connection_;
    std::uint64_t program_ = 0;
    bool said_hello_ = false;
};

class Session {
public:
    Session() {
        require(service_.start(socket_path()).empty(), "the service starts");
        {
            auto const device = device_.access();
            device->hub.boot(sim::make_firmware_image({sim::HubVariant::bhi260ap, 1}));
            device->hub.install_callbacks();
            device->hub.activate(37, 10, 1, device.now());
            device->journal.follow([](std::uint64_t sequence, sim::Record const& record) {
                std::string const line = sim::record_line(sequence, record);
                require(line.find('\n') == std::string::npos, "a record is a line");
            });
        }
        good_ = std::make_unique<Client>();
        good_->say_hello(0, 0);
        object_ = static_cast<unsigned int>(
            good_->call<sim::operations::system_t::constructor>(0, {sim::Text("/dev/r47-rtu-driver"), 2}));
        for (auto& client : clients_) {
            client = std::make_unique<Client>();
        }
    }

    void act(std::string const& line) {
        std::istringstream words(line);
        char action = 0;
        unsigned int number = 0;
        words >> action >> number;
        auto& client = *clients_[number % clients_.size()];
        std::uint64_t lane = 0;
        switch (action) {
            case 'h': {
                std::size_t other = clients_.size();
                words >> lane >> other;
                client.say_hello(lane, other < clients_.size() ? clients_[other]->program() : 0);
                break;
            }
            case 'c':
                client.send(call_of(words));
                break;
            case 'm':
                client.send(rest_of(words));
                break;
            case 'r':
                client.send_raw(rest_of(words));
                break;
            case 'd':
                client.send(message_of(MessageKind::done, sim::Done{}));
                break;
            case 'b':
                client.send(message_of(MessageKind::begin));
                break;
            case 'q':
                words >> lane;
                client.send(message_of(MessageKind::quiet, sim::Quiet{static_cast<sim::Lane>(lane)}));
                break;
            case 'x':
                client.finish();
                ended_.push_back(std::exchange(clients_[number % clients_.size()], std::make_unique<Client>()));
                break;
            case 's':
                if (steps_.size() < kMostSteps) {
                    steps_.emplace_back(
                        [this, length = sim::Duration(number % kLongestStep)] { device_.timeline.step(length); });
                }
                break;
            case '!':
                sim::device_commands().run({device_}, kEvents[number % std::size(kEvents)]);
                break;
            default:
                break;
        }
        hear_clients(0);
        sim::operations::system_t::set_device_status::Arguments const state{hal::device_state_te::running};
        good_->call<sim::operations::system_t::set_device_status>(object_, state);
    }

    void end() {
        for (auto& client : clients_) {
            client->finish();
            ended_.push_back(std::move(client));
        }
        while (hear_clients(-1)) {
        }
        for (std::thread& step : steps_) {
            step.join();
        }
        sim::device_commands().run({device_}, "fault clear");
        good_->call<sim::operations::system_t::destructor>(object_, {});
        auto const programs = service_.programs();
        require(programs.size() == 1 && programs.front().objects == 0, "nothing is left of those who have gone");
        good_->finish();
        require(service_.wait_until_unused(std::chrono::seconds(10)), "nobody is left");
        service_.stop();
    }

private:
    static constexpr std::size_t kMostSteps = 4;
    static constexpr unsigned int kLongestStep = 500000;  // us

    static std::string rest_of(std::istream& words) {
        words.get();
        return {std::istreambuf_iterator<char>(words), {}};
    }

    // Takes what the device says to those who have ended; false when it has ended all their connections.
    bool hear_clients(int wait_ms) {
        std::vector<pollfd> waited;
        for (auto const& client : ended_) {
            waited.push_back({client->descriptor(), POLLIN, 0});
        }
        if (waited.empty() || ::poll(waited.data(), waited.size(), wait_ms) <= 0) {
            return false;
        }
        for (std::size_t i = waited.size(); i-- > 0;) {
            char bytes[4096];
            if (waited[i].revents != 0 && ::recv(waited[i].fd, bytes, sizeof bytes, 0) <= 0) {
                ended_.erase(ended_.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
        return !ended_.empty();
    }

    sim::Device device_{std::make_unique<sim::MemoryFileSystem>()};
    sim::Service service_{device_};
    std::unique_ptr<Client> good_;  // a program that behaves
    unsigned int object_ = 0;
    std::array<std::unique_ptr<Client>, 4> clients_;
    std::vector<std::unique_ptr<Client>> ended_;
    std::vector<std::thread> steps_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const input(reinterpret_cast<char const*>(data), size);
    check_codec(input);
    std::istringstream lines(input);
    auto session = std::make_unique<Session>();
    for (std::string line; std::getline(lines, line);) {
        session->act(line);
    }
    session->end();
    return 0;
}
