// Serves the device to the programs that use it.
#include "sim/service/service.h"

#include <sys/random.h>

#include <algorithm>
#include <cctype>
#include <exception>
#include <utility>

#include "sim/core/unix_socket.h"
#include "sim/service/gate.h"
#include "sim/service/target.h"

namespace sim {

namespace {

constexpr std::size_t kLongestName = 32;

// A number that nobody guesses, so that no program is taken for another.
std::uint64_t make_key() {
    std::uint64_t key = 0;
    while (key == 0) {
        [[maybe_unused]] auto const count = ::getrandom(&key, sizeof key, 0);
    }
    return key;
}

// A program names itself: only what can stand in a field of the journal remains.
std::string plain_name(std::string name) {
    name.resize(std::min(name.size(), kLongestName));
    for (char& c : name) {
        c = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_' ? c : '_';
    }
    return name.empty() ? "program" : name;
}

std::string callback_of(Occurrence const& running) {
    return running.object == nullptr
               ? "a callback of an object that it has destroyed"
               : running.object->callback(running).text() + " of object " + std::to_string(running.object->number());
}

void write_program_record(Device::Access const& device, Program const& program, std::string const& text) {
    Record record;
    record.kind = RecordKind::program;
    record.start = device.now();
    record.program = program.name();
    record.text = text;
    device->journal.write(record);
}

void refuse(int connection, std::string const& reason) {
    Connection(connection).send_at_once(message_of(MessageKind::refusal, Refusal{reason}));
}

}  // namespace

Service::Service(Device& device)
    : device_(device),
      server_({[this](int connection) { serve(connection); }, refuse, [this](int gone) { notice_end(gone); }},
              kMostConnections) {
    device_.timeline.set_barrier([this] {
        auto access = device_.access();
        access.wait_until([&] { return stopping_ || at_rest() || !device_.timeline.is_stepped(); });
    });
}

Service::~Service() {
    stop();
}

// The timeline has its thread from here on, and no call has to find out that the host has none left.
Error Service::start(std::string const& path) {
    device_.timeline.at(Time(0), [] {});
    return server_.start(path);
}

void Service::stop() {
    {
        auto const access = device_.access();
        stopping_ = true;
    }
    device_.notify();
    device_.timeline.stop();
    server_.stop();
}

std::vector<ProgramInfo> Service::programs() {
    auto const access = device_.access();
    std::vector<ProgramInfo> infos;
    for (auto const& program : programs_) {
        infos.push_back({program->name(), program->pid(), program->objects()});
    }
    return infos;
}

std::vector<std::string> Service::waited_for() {
    auto const access = device_.access();
    std::vector<std::string> lines;
    for (auto const& program : programs_) {
        for (EventLane* const lane : {&program->hub_lane, &program->button_lane}) {
            if (!lane->at_rest() && lane->running()) {
                lines.push_back(program->name() + ", pid " + std::to_string(program->pid()) + ", is in " +
                                callback_of(*lane->running()));
            }
        }
    }
    return lines;
}

bool Service::wait_until_unused(std::chrono::milliseconds longest) {
    auto access = device_.access();
    return access.wait_until([&] { return programs_.empty(); }, longest);
}

void Service::serve(int connection) {
    Serving serving(connection);
    {
        auto const device = device_.access();
        serving_[connection] = &serving;
        serving.has_gone = is_hung_up(connection);  // before anybody could be told
    }
    try {
        std::string_view message;
        while (serving.connection.receive(message) && take(serving, message)) {
        }
    } catch (std::exception const&) {
        // As bytes that are no message.
    }
    auto const device = device_.access();
    serving_.erase(connection);
    farewell(device, serving);
    serving.program.reset();  // with the lock held
}

// The thread that serves the connection may be waiting for something else, so it is not the one to see its end.
void Service::notice_end(int connection) {
    auto const device = device_.access();
    auto const found = serving_.find(connection);
    if (found != serving_.end()) {
        farewell(device, *found->second);
    }
}

// False where the message is none that may come now.
bool Service::take(Serving& serving, std::string_view message) {
    Decoder bytes(message);
    MessageKind kind{};
    bytes.get(kind);
    if (serving.program == nullptr) {
        Error const error = kind == MessageKind::hello ? welcome(serving, bytes) : "no hello";
        if (!error.empty()) {
            serving.connection.send(message_of(MessageKind::refusal, Refusal{error}));
        }
        return error.empty();
    }
    switch (kind) {
        case MessageKind::call: {
            Call call{};
            bytes.get(call);
            std::string const reply = answer({device_, *serving.program, serving.lane}, call, bytes);
            return !reply.empty() && serving.connection.send(reply);
        }
        case MessageKind::quiet: {
            Quiet quiet{};
            bytes.get(quiet);
            EventLane* const lane = serving.program->lane(quiet.lane);
            if (lane == nullptr) {
                return false;
            }
            auto access = device_.access();
            lane->close();
            access.wait_until([&] {
                lane->look();
                return lane == serving.lane || !lane->running();
            });
            return serving.connection.send(message_of(MessageKind::reply, CallReply{}));
        }
        case MessageKind::begin: {
            if (serving.lane == nullptr || !bytes.complete()) {
                return false;
            }
            CallReply reply{};
            reply.result = static_cast<std::int64_t>(begin(serving));
            return serving.connection.send(message_of(MessageKind::reply, reply));
        }
        case MessageKind::done: {
            Done done{};
            bytes.get(done);
            if (serving.lane == nullptr || !bytes.complete()) {
                return false;
            }
            auto const access = device_.access();
            serving.lane->done(done);
            device_.notify();
            return true;
        }
        default:
            return false;
    }
}

Error Service::welcome(Serving& serving, Decoder& bytes) {
    Hello hello{};
    bytes.get(hello);
    if (!bytes.complete() || hello.version != table_version()) {
        return "the library and the device are of different versions";
    }
    auto const access = device_.access();
    if (serving.has_gone) {
        return "nobody is there";
    }
    if (hello.program == 0) {
        std::string const name = plain_name(hello.name) + "." + std::to_string(++last_program_);
        serving.program =
            std::make_shared<Program>(device_, make_key(), name, process_at(serving.connection.descriptor()));
        programs_.push_back(serving.program);
        write_program_record(access, *serving.program, "connected");
    } else {
        std::shared_ptr<Program> const program = find(hello.program);
        if (program == nullptr) {
            return "no such program";
        }
        EventLane const* const lane = program->lane(hello.lane);
        if (lane != nullptr && lane->attached()) {
            return "the program has this lane already";
        }
        serving.program = program;
    }
    ++serving.program->connections;
    if (EventLane* const lane = serving.program->lane(hello.lane)) {
        serving.lane = lane;
    }
    Descriptor file;
    EventProgress progress = hello.lane == Lane::hub ? EventProgress::make(file) : EventProgress();
    if (!serving.connection.send(message_of(MessageKind::welcome, Welcome{serving.program->key()}), file)) {
        return {};  // it has gone; its end comes next
    }
    if (serving.lane != nullptr) {
        serving.lane->attach(&serving.connection, std::move(progress));
    }
    return {};
}

// Asks the fault rules before the first of two calls only.
CallbackTurn Service::begin(Serving& serving) {
    auto access = device_.access();
    EventLane& lane = *serving.lane;
    FaultEffect fault;
    if (lane.running_object() != nullptr && !lane.take_repeat() && !access->faults.none()) {
        Callback const callback = lane.running_object()->callback(*lane.running());
        fault = access->faults.next({callback.name, access.now(), lane.running_object()->number(), callback.arguments});
    }
    if (fault.delay) {
        CallContext(access, *serving.program, serving.lane).pass(*fault.delay);
    }
    ServedObject const* const object = lane.running_object();
    if (object == nullptr) {
        return CallbackTurn::skip;
    }
    bool const dropped = fault.delivery == FaultEffect::Delivery::dropped;
    Record record;
    record.kind = dropped ? RecordKind::lost : RecordKind::callback;
    record.start = access.now();
    record.program = serving.program->name();
    record.object = object->number();
    record.rule = fault.rule;
    record.text = object->callback(*lane.running()).text();
    access->journal.write(record);
    if (fault.delivery != FaultEffect::Delivery::doubled) {
        return dropped ? CallbackTurn::skip : CallbackTurn::call;
    }
    lane.repeat();
    return CallbackTurn::call_and_begin_again;
}

// Once, by whoever sees first that the connection has ended.
void Service::farewell(Device::Access const& device, Serving& serving) {
    if (std::exchange(serving.has_gone, true)) {
        return;
    }
    if (serving.program != nullptr) {
        Program& program = *serving.program;
        if (serving.lane != nullptr) {
            serving.lane->attach(nullptr);
        }
        if (--program.connections == 0) {
            std::size_t const left = program.objects();
            program.end();
            write_program_record(device, program,
                                 left == 0 ? "ended" : "ended, " + std::to_string(left) + " objects released");
            programs_.erase(std::find(programs_.begin(), programs_.end(), serving.program));
        }
    }
    device_.notify();
}

std::shared_ptr<Program> Service::find(std::uint64_t key) const {
    auto const found =
        std::find_if(programs_.begin(), programs_.end(), [&](auto const& program) { return program->key() == key; });
    return found != programs_.end() ? *found : nullptr;
}

bool Service::at_rest() const {
    return std::all_of(programs_.begin(), programs_.end(), [](auto const& program) {
        return program->hub_lane.at_rest() && program->button_lane.at_rest();
    });
}

}  // namespace sim
