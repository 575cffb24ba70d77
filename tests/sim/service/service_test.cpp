// Tests of how the device serves its programs, whatever they send.
#include "sim/service/service.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <random>
#include <thread>

#include "sim/control/command.h"
#include "sim/control/device_directory.h"
#include "sim/core/text.h"
#include "sim/models/firmware_image.h"
#include "tests/sim/raw_program.h"
#include "tests/sim/temporary_directory.h"

namespace {

using namespace std::chrono_literals;
using namespace sim::operations;
using sim::Lane;
using sim::MessageKind;
using sim::Text;
using Strings = std::vector<std::string>;

constexpr auto kLimit = 60s;  // what no working run ever reaches

class ServiceTest : public testing::Test {
protected:
    ServiceTest() {
        EXPECT_EQ(service_.start(path()), "");
        follower_ = device_.access()->journal.follow([this](std::uint64_t, sim::Record const& record) {
            if (record.kind == sim::RecordKind::program || record.kind == sim::RecordKind::lost) {
                journal_.push_back(record.program + " " + record.text);
            }
        });
    }
    ~ServiceTest() override { service_.stop(); }

    std::string path() const { return sim::calls_socket(directory_.path()); }
    // What the journal says of programs.
    Strings journal() {
        auto const lock = device_.access();
        return journal_;
    }
    bool wait_until_unused() { return service_.wait_until_unused(kLimit); }
    // Another program is served as ever.
    void expect_service() {
        RawProgram program(path());
        ASSERT_NE(program.say_hello(), 0U) << program.refusal;
        auto const rtu = static_cast<unsigned int>(program.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2));
        EXPECT_GT(rtu, 0U);
        EXPECT_EQ(program.call<rtu_t::set_exposure>(rtu, 5000U), 0);
        EXPECT_EQ(program.call<rtu_t::destructor>(rtu), 0);
    }

    TemporaryDirectory directory_;
    sim::Device device_{std::make_unique<sim::MemoryFileSystem>()};
    sim::Service service_{device_};
    Strings journal_;  // guarded by the device's lock
    int follower_ = 0;
};

TEST_F(ServiceTest, AProgramIsNamedByItselfAndNumbered) {
    for (std::string const& name :
         {std::string("console"), std::string("a b\n\x1b[2J/\xC3\xA4"), std::string(), std::string(1000, 'x')}) {
        RawProgram program(path());
        EXPECT_NE(program.say_hello(Lane::none, 0, sim::table_version(), name), 0U);
        EXPECT_EQ(service_.programs().size(), 1U);
        EXPECT_EQ(service_.programs().front().pid, ::getpid());
        program.shut_down();
        EXPECT_TRUE(wait_until_unused());
    }
    EXPECT_EQ(journal(), (Strings{"console.1 connected", "console.1 ended", "a_b___2J___.2 connected",
                                  "a_b___2J___.2 ended", "program.3 connected", "program.3 ended",
                                  std::string(32, 'x') + ".4 connected", std::string(32, 'x') + ".4 ended"}));
}

TEST_F(ServiceTest, AnotherVersionIsRefusedWithAClearLine) {
    RawProgram program(path());
    EXPECT_EQ(program.say_hello(Lane::none, 0, sim::table_version() + 1), 0U);
    EXPECT_EQ(program.refusal, "the library and the device are of different versions");
    EXPECT_TRUE(program.ended());
    EXPECT_EQ(journal(), Strings{});
    expect_service();
}

TEST_F(ServiceTest, AHelloThatIsNoneIsRefused) {
    std::string const hello = message_of(MessageKind::hello, sim::Hello{sim::table_version(), Lane::none, 0, "raw"});
    for (std::string const& message : {std::string(), std::string("garbage"), hello + "x", hello.substr(0, 9),
                                       message_of(MessageKind::call, sim::Call{sim::OperationId::count, 0, 1}),
                                       std::string(1, '\xFF'), message_of(MessageKind::begin)}) {
        RawProgram program(path());
        EXPECT_TRUE(program.send(message));
        EXPECT_FALSE(program.ended()) << "it is told why";
        EXPECT_TRUE(program.ended());
    }
    RawProgram stranger(path());
    EXPECT_EQ(stranger.say_hello(Lane::hub, 12345), 0U);
    EXPECT_EQ(stranger.refusal, "no such program");
    EXPECT_EQ(journal(), Strings{});
    expect_service();
}

TEST_F(ServiceTest, ALaneHasOneConnection) {
    RawProgram program(path());
    auto const key = program.say_hello();
    RawProgram lane(path());
    EXPECT_EQ(lane.say_hello(Lane::hub, key), key);
    RawProgram second(path());
    EXPECT_EQ(second.say_hello(Lane::hub, key), 0U);
    EXPECT_EQ(second.refusal, "the program has this lane already");
    RawProgram other(path());
    EXPECT_EQ(other.say_hello(Lane::button, key), key);
}

TEST_F(ServiceTest, AProcessThatConnectsWithoutEndLeavesRoomForOthers) {
    RawProgram program(path());
    auto const key = program.say_hello();
    std::vector<std::unique_ptr<RawProgram>> others;
    while (others.size() < sim::Service::kMostConnections / 2 - 1) {
        auto& other = *others.emplace_back(std::make_unique<RawProgram>(path()));
        ASSERT_EQ(other.say_hello(Lane::none, key), key) << others.size();
    }
    for (int i = 0; i < 10; ++i) {
        RawProgram beyond(path());
        EXPECT_EQ(beyond.say_hello(), 0U);
        EXPECT_EQ(beyond.refusal, "too many connections: a process may have as many as it leaves to others");
        EXPECT_TRUE(beyond.ended());
    }
    EXPECT_GT(program.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2), 0) << "what it had goes on";
    std::string const socket = path();
    pid_t const other_process = ::fork();
    if (other_process == 0) {
        RawProgram other(socket);
        bool const served =
            other.say_hello() != 0 && other.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2) > 0;
        ::_exit(served ? 0 : 1);
    }
    int status = -1;
    ::waitpid(other_process, &status, 0);
    EXPECT_EQ(status, 0) << "another process is served";
    others.clear();
    std::uint64_t again = 0;
    for (auto const limit = std::chrono::steady_clock::now() + kLimit;
         again == 0 && std::chrono::steady_clock::now() < limit; std::this_thread::yield()) {
        again = RawProgram(path()).say_hello();  // the end of a connection takes its time to be seen
    }
    EXPECT_NE(again, 0U);
}

TEST_F(ServiceTest, ProgramsAreToldInTheOrderOfTheirConnection) {
    std::vector<std::unique_ptr<RawProgram>> programs;
    Strings names;
    for (int i = 1; i <= 20; ++i) {
        EXPECT_NE(programs.emplace_back(std::make_unique<RawProgram>(path()))->say_hello(), 0U);
        names.push_back("raw." + std::to_string(i));
    }
    Strings told;
    for (sim::ProgramInfo const& program : service_.programs()) {
        told.push_back(program.name);
    }
    EXPECT_EQ(told, names);
}

TEST_F(ServiceTest, NothingIsLeftOfConnectionsThatHaveEnded) {
    auto const descriptors = [] {
        std::filesystem::directory_iterator const all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    auto const before = descriptors();
    {
        std::vector<std::unique_ptr<RawProgram>> programs;
        for (int i = 0; i < 50; ++i) {
            EXPECT_NE(programs.emplace_back(std::make_unique<RawProgram>(path()))->say_hello(), 0U);
        }
        EXPECT_EQ(descriptors(), before + 100) << "both ends";
    }
    for (auto const limit = std::chrono::steady_clock::now() + kLimit;
         descriptors() != before && std::chrono::steady_clock::now() < limit; std::this_thread::yield()) {
    }
    EXPECT_EQ(descriptors(), before);
}

// What a program that was welcome sends then.
class BadMessageTest : public ServiceTest {
protected:
    // The message ends the connection of a program that has an rtu_t, object 1.
    void expect_end(std::string const& message) {
        RawProgram program(path());
        ASSERT_NE(program.say_hello(), 0U);
        auto const rtu = static_cast<unsigned int>(program.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2));
        EXPECT_TRUE(program.send(with_object(message, rtu)));
        EXPECT_TRUE(program.ended()) << sim::quoted(message);
        EXPECT_TRUE(wait_until_unused());
    }
    // A call has its object behind the kind and the operation.
    static std::string with_object(std::string message, unsigned int object) {
        if (message.size() >= 7 && message[3] == '\x01') {
            message.replace(3, sizeof object, reinterpret_cast<char const*>(&object), sizeof object);
        }
        return message;
    }
};

TEST_F(BadMessageTest, MessagesThatAreNoneOfItsEndTheConnection) {
    expect_end("");
    expect_end("garbage");
    expect_end(std::string(1, '\xFF'));
    expect_end(message_of(MessageKind::welcome, sim::Welcome{1}));
    expect_end(message_of(MessageKind::event, sim::Event{}));
    expect_end(message_of(MessageKind::hello, sim::Hello{sim::table_version(), Lane::none, 0, "again"}));
    expect_end(message_of(MessageKind::quiet, sim::Quiet{Lane::none}));
    expect_end(message_of(MessageKind::quiet, sim::Quiet{static_cast<Lane>(9)}));
    expect_service();
}

TEST_F(BadMessageTest, MessagesOfALaneEndAnotherConnection) {
    expect_end(message_of(MessageKind::begin));
    expect_end(message_of(MessageKind::done, sim::Done{}));
    expect_service();
}

TEST_F(BadMessageTest, EveryPartOfACallIsRefused) {
    std::string const call =
        RawProgram::call_of<rtu_t::set_io_pin_config>(1, static_cast<unsigned char>(2), hal::dio_pin_config_t{});
    for (std::size_t size = 0; size < call.size(); ++size) {
        expect_end(call.substr(0, size));
    }
    expect_end(call + '\0');
    expect_service();
}

TEST_F(BadMessageTest, CallsOfWhatThereIsNotEndTheConnection) {
    expect_end(message_of(MessageKind::call, sim::Call{sim::OperationId::count, 1, 1}));
    expect_end(message_of(MessageKind::call, sim::Call{static_cast<sim::OperationId>(65535), 1, 1}));
    expect_end(RawProgram::call_of<rtu_t::single_shot>(0, true));
    expect_end(RawProgram::call_of<rtu_t::single_shot>(77777, true));
    expect_end(RawProgram::call_of<gyro_t::install_callbacks>(1));  // an rtu_t is none
    expect_end(RawProgram::call_of<camera_t::determine_imxtype>(1));
    expect_end(
        RawProgram::call_of<gyro_delegate_t::constructor>(0, sim::ObjectNumber{1}, 37, sim::FunctionGiven{true}));
    expect_service();
}

TEST_F(ServiceTest, TheObjectsOfAnotherProgramAreOutOfReach) {
    RawProgram one(path());
    RawProgram two(path());
    one.say_hello();
    two.say_hello();
    auto const rtu = static_cast<unsigned int>(one.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2));
    EXPECT_EQ(two.call<rtu_t::destructor>(rtu), -99);
    EXPECT_EQ(one.call<rtu_t::single_shot>(rtu, false), 0);
}

TEST_F(ServiceTest, AConnectionThatEndsInTheMiddleOfAMessageHurtsNobody) {
    std::string const hello = message_of(MessageKind::hello, sim::Hello{sim::table_version(), Lane::none, 0, "raw"});
    for (std::size_t size = 0; size < hello.size() + 4; ++size) {
        RawProgram program(path());
        std::uint32_t const length = static_cast<std::uint32_t>(hello.size());
        std::string const bytes = std::string(reinterpret_cast<char const*>(&length), sizeof length) + hello;
        EXPECT_TRUE(program.send_raw(bytes.substr(0, size)));
        program.finish();
        EXPECT_TRUE(program.ended()) << size;
    }
    RawProgram program(path());
    program.send_raw("\xFF\xFF\xFF\xFF");
    EXPECT_TRUE(program.ended());
    expect_service();
}

TEST_F(ServiceTest, NoiseEndsItsOwnConnectionAlone) {
    RawProgram good(path());
    good.say_hello();
    auto const rtu = static_cast<unsigned int>(good.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2));
    std::mt19937 random(47);
    for (int i = 0; i < 300; ++i) {
        RawProgram noisy(path());
        if (i % 2 == 0) {
            EXPECT_NE(noisy.say_hello(), 0U);
        }
        std::string noise(random() % 64, '\0');
        for (char& c : noise) {
            c = static_cast<char>(random());
        }
        noisy.send(noise);
        noisy.send_raw(noise);
        noisy.finish();
        EXPECT_EQ(good.call<rtu_t::set_exposure>(rtu, 5000U), 0);
    }
}

TEST_F(ServiceTest, AProgramThatFloodsAndReadsNothingHurtsNobody) {
    RawProgram flood(path());
    flood.say_hello();
    auto const rtu = static_cast<unsigned int>(flood.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2));
    std::thread flooder([&] {
        std::string const call = RawProgram::call_of<rtu_t::get_exposure>(rtu);
        while (flood.send(call)) {
        }
    });
    for (int i = 0; i < 100; ++i) {
        expect_service();
    }
    flood.shut_down();
    flooder.join();
    EXPECT_TRUE(wait_until_unused());
}

TEST_F(ServiceTest, ANewProgramAndAnOldOneMeetTheSameDevice) {
    {
        RawProgram first(path());
        first.say_hello();
        auto const rtu = static_cast<unsigned int>(first.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2));
        EXPECT_EQ(first.call<rtu_t::set_exposure>(rtu, 4321U), 0);
    }
    EXPECT_TRUE(wait_until_unused());
    unsigned int exposure_us = 0;
    device_.access()->rtu.get_exposure(exposure_us);
    EXPECT_EQ(exposure_us, 4321U);
}

// A sensor hub that samples, and a program with a lane and a delegate.
class LaneTest : public ServiceTest {
protected:
    LaneTest() {
        auto const device = device_.access();
        device->hub.boot(sim::make_firmware_image({sim::HubVariant::bhi260ap, 1}));
        device->hub.activate(37, 10, 1, device.now());
    }

    struct Listener {
        explicit Listener(std::string const& path, std::string const& name = "raw") : calls(path), lane(path) {
            key = calls.say_hello(Lane::none, 0, sim::table_version(), name);
            lane.say_hello(Lane::hub, key);
            progress = sim::EventProgress(lane.file);
            gyro = static_cast<unsigned int>(
                calls.call<gyro_t::constructor>(0, Text("/dev/i2c-2"), 2, Text(), Text("/irq"), std::uint16_t{200}));
            delegate = add();
        }
        // One more delegate.
        unsigned int add() {
            return static_cast<unsigned int>(
                calls.call<gyro_delegate_t::constructor>(0, sim::ObjectNumber{gyro}, 37, sim::FunctionGiven{true}));
        }
        void done() { lane.send(message_of(MessageKind::done, sim::Done{})); }
        // As the library does it: the Done only where the device waits for it.
        bool end() {
            bool const is_told = progress.end();
            if (is_told) {
                done();
            }
            return is_told;
        }

        RawProgram calls;
        RawProgram lane;
        sim::EventProgress progress;
        std::uint64_t key = 0;
        unsigned int gyro = 0;
        unsigned int delegate = 0;
    };

    // From now on the clock makes nobody look at the lane, and nothing comes that has not come yet.
    void end_samples() {
        device_.timeline.run_real();
        auto const device = device_.access();
        device->hub.activate(37, 0, 0, device.now());
    }

    std::future<void> start_step(sim::Duration length) {
        return std::async(std::launch::async, [this, length] { device_.timeline.step(length); });
    }
};

TEST_F(LaneTest, AnEventComesWhenTheOneBeforeIsDone) {
    Listener listener(path());
    auto const second = listener.add();
    auto step = start_step(150ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    EXPECT_EQ(listener.calls.call<gyro_t::irq_callback_hold>(listener.gyro, false), 0);  // the device is free
    listener.done();
    EXPECT_EQ(listener.lane.next_event().object, second);
    listener.done();
    step.get();
}

TEST_F(LaneTest, ASampleNeedsNoDoneWhereNobodyWaitsForItsEnd) {
    Listener listener(path());
    device_.timeline.run_real();
    do {
        EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    } while (listener.end());
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
}

TEST_F(LaneTest, WhatWaitsInALaneFollowsWithoutAnotherSample) {
    Listener listener(path());
    auto const second = listener.add();
    auto const third = listener.add();
    device_.timeline.run_real();
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    end_samples();
    for (unsigned int const next : {second, third}) {
        listener.end();
        EXPECT_EQ(listener.lane.next_event().object, next);
    }
    listener.end();
}

TEST_F(LaneTest, ACallbackIsAnnouncedWhereAJournalOrAFaultRuleWantsIt) {
    Listener listener(path());
    auto const next_is_announced = [&] {
        auto step = start_step(80ms);
        bool const announced = listener.lane.next_event().announce;
        listener.done();
        step.get();
        return announced;
    };
    device_.timeline.step(40ms);
    EXPECT_TRUE(next_is_announced());
    device_.access()->journal.unfollow(follower_);
    EXPECT_FALSE(next_is_announced());
    ASSERT_TRUE(sim::device_commands().run({device_}, "fault add rtu_t::* status -1").ok);
    EXPECT_TRUE(next_is_announced());
}

TEST_F(LaneTest, AStepWaitsForTheCallbackAndItIsSaidForWhom) {
    Listener listener(path(), "slow");
    auto step = start_step(150ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    EXPECT_EQ(service_.waited_for(),
              Strings{"slow.1, pid " + std::to_string(::getpid()) + ", is in gyro_delegate_t(37) of object " +
                      std::to_string(listener.delegate)});
    listener.done();
    step.get();
    EXPECT_EQ(service_.waited_for(), Strings{});
}

TEST_F(LaneTest, AnObjectThatWentInItsOwnCallbackIsWaitedForToo) {
    Listener listener(path(), "slow");
    auto step = start_step(150ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    EXPECT_EQ(listener.lane.call<gyro_delegate_t::destructor>(listener.delegate), 0);
    EXPECT_EQ(service_.waited_for(), Strings{"slow.1, pid " + std::to_string(::getpid()) +
                                             ", is in a callback of an object that it has destroyed"});
    listener.done();
    step.get();
}

// What the device promises, whatever the library then waits for itself.
TEST_F(LaneTest, TheEndOfAnObjectIsAnsweredWhenItsCallbackIsDone) {
    Listener listener(path());
    EXPECT_EQ(listener.calls.call<gyro_t::install_callbacks>(listener.gyro), 0);
    auto const alarm = static_cast<unsigned int>(
        listener.calls.call<gyro_alarm_t::constructor>(0, sim::ObjectNumber{listener.gyro}, std::uint16_t{37}));
    EXPECT_EQ(listener.calls.call<gyro_t::irq_callback_hold>(listener.gyro, false), 0);
    ASSERT_TRUE(sim::device_commands().run({device_}, "tilt 0 90 0").ok);
    auto step = start_step(150ms);
    auto const expect_to_wait = [&](unsigned int running, std::string const& call) {
        while (listener.lane.next_event().object != running) {
            listener.done();  // the records of the gyro_t come first
        }
        listener.calls.send(call);
        std::atomic<bool> is_done{false};
        auto answered = std::async(std::launch::async, [&] {
            EXPECT_EQ(listener.calls.result(), 0);
            return is_done.load();
        });
        EXPECT_EQ(answered.wait_for(20ms), std::future_status::timeout);
        is_done = true;
        listener.done();
        EXPECT_TRUE(answered.get());
    };
    expect_to_wait(listener.delegate, RawProgram::call_of<gyro_delegate_t::destructor>(listener.delegate));
    expect_to_wait(alarm, RawProgram::call_of<gyro_alarm_t::destructor>(alarm));
    step.get();
    step = start_step(100ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.gyro);
    listener.done();
    expect_to_wait(listener.gyro, RawProgram::call_of<gyro_t::irq_callback_hold>(listener.gyro, true));
    step.get();
}

TEST_F(LaneTest, ALaneThatNeverAnswersDelaysOnlyItsOwnCallbacks) {
    Listener stuck(path(), "stuck");
    Listener other(path(), "other");
    device_.timeline.run_scaled(100);
    EXPECT_EQ(stuck.lane.next_event().object, stuck.delegate);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(other.lane.next_event().object, other.delegate);
        other.done();
    }
    expect_service();
    EXPECT_TRUE(sim::device_commands().run({device_}, "show hub").ok);
    Strings const waited_for = service_.waited_for();
    EXPECT_TRUE(std::any_of(waited_for.begin(), waited_for.end(),
                            [](std::string const& line) { return line.find("stuck.1, ") == 0; }));
}

TEST_F(LaneTest, WhatALaneDoesNotTakeIsLostAndTheJournalSaysSo) {
    Listener stuck(path(), "stuck");
    device_.access()->hub.activate(37, 400, 1, device_.timeline.now());
    EXPECT_EQ(device_.timeline.now(), 0s);
    device_.timeline.run_scaled(1000);
    EXPECT_EQ(stuck.lane.next_event().object, stuck.delegate);
    for (auto const limit = std::chrono::steady_clock::now() + kLimit;
         journal().size() < 3 && std::chrono::steady_clock::now() < limit; std::this_thread::yield()) {
    }
    EXPECT_EQ(journal().at(1), "stuck.1 an event: the program does not keep up");
}

TEST_F(LaneTest, AStepDoesNotWaitForAProgramWithoutALane) {
    RawProgram program(path());
    program.say_hello();
    auto const gyro = static_cast<unsigned int>(
        program.call<gyro_t::constructor>(0, Text("/dev/i2c-2"), 2, Text(), Text("/irq"), std::uint16_t{200}));
    EXPECT_GT(program.call<gyro_delegate_t::constructor>(0, sim::ObjectNumber{gyro}, 37, sim::FunctionGiven{true}), 0);
    auto step = start_step(1s);
    EXPECT_EQ(step.wait_for(kLimit), std::future_status::ready);
    program.shut_down();
}

TEST_F(LaneTest, AProgramThatEndsIsWaitedForNoMore) {
    Listener listener(path());
    auto step = start_step(150ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    listener.lane.shut_down();
    EXPECT_EQ(step.wait_for(kLimit), std::future_status::ready);
    EXPECT_EQ(listener.calls.call<gyro_delegate_t::destructor>(listener.delegate), 0) << "nothing of it runs any more";
}

TEST_F(LaneTest, ADoneThatNobodyAskedForIsNothing) {
    Listener listener(path());
    listener.done();
    auto step = start_step(150ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    listener.done();
    listener.done();
    step.get();
    expect_service();
}

TEST_F(LaneTest, AQuietLaneHasNoEventsAnyMore) {
    Listener listener(path());
    listener.calls.send(message_of(MessageKind::quiet, sim::Quiet{Lane::hub}));
    EXPECT_EQ(listener.calls.result(), 0);
    start_step(1s).get();
    listener.lane.finish();
    EXPECT_TRUE(listener.lane.ended()) << "without an event before it";
}

TEST_F(LaneTest, AQuietWaitsForTheCallbackThatRuns) {
    Listener listener(path());
    auto step = start_step(150ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    listener.calls.send(message_of(MessageKind::quiet, sim::Quiet{Lane::hub}));
    std::atomic<bool> is_done{false};
    auto quiet = std::async(std::launch::async, [&] {
        EXPECT_EQ(listener.calls.result(), 0);
        return is_done.load();
    });
    EXPECT_EQ(quiet.wait_for(20ms), std::future_status::timeout);
    is_done = true;
    listener.done();
    EXPECT_TRUE(quiet.get());
    step.get();
}

TEST_F(LaneTest, WhoeverWaitsForACallbackIsToldOfItsEnd) {
    for (bool const quiet : {false, true}) {
        Listener listener(path());
        device_.timeline.run_real();
        {
            auto const device = device_.access();
            device->hub.activate(37, 10, 1, device.now());
        }
        EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
        end_samples();
        listener.calls.send(quiet ? message_of(MessageKind::quiet, sim::Quiet{Lane::hub})
                                  : RawProgram::call_of<gyro_delegate_t::destructor>(listener.delegate));
        auto answered = std::async(std::launch::async, [&] { EXPECT_EQ(listener.calls.result(), 0); });
        EXPECT_EQ(answered.wait_for(20ms), std::future_status::timeout);
        listener.end();
        answered.get();
    }
}

// What a program writes there is no more than it could say.
TEST_F(LaneTest, AnEndThatIsNoneHurtsNobody) {
    Listener listener(path());
    auto step = start_step(1s);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
        listener.progress.begin();
        listener.progress.end();
        listener.done();
    }
    listener.lane.shut_down();
    step.get();
    expect_service();
}

TEST_F(LaneTest, AStopEndsWhateverWaits) {
    Listener listener(path());
    auto step = start_step(150ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    listener.calls.send(RawProgram::call_of<gyro_t::irq_callback_hold>(listener.gyro, true));
    auto stopped = std::async(std::launch::async, [this] { service_.stop(); });
    EXPECT_EQ(stopped.wait_for(kLimit), std::future_status::ready);
    EXPECT_EQ(step.wait_for(kLimit), std::future_status::ready);
}

// Two threads of a program may do what no program should: one destroys what the other is using.
TEST_F(LaneTest, AnObjectThatIsDestroyedUnderACallHurtsNobody) {
    Listener listener(path());
    RawProgram thread(path());
    EXPECT_EQ(thread.say_hello(Lane::none, listener.key), listener.key);
    ASSERT_TRUE(sim::device_commands().run({device_}, "fault add gyro_t::get_status delay 100 count 1").ok);
    auto step = start_step(0s);
    device_.timeline.at(50ms, [&] {
        EXPECT_EQ(listener.calls.call<gyro_t::destructor>(listener.gyro), 0);
        EXPECT_EQ(listener.calls.call<gyro_delegate_t::destructor>(listener.delegate), 0);
    });
    EXPECT_EQ(thread.call<gyro_t::get_status>(listener.gyro), -1);
    EXPECT_EQ(thread.error, EBADF);
    step.get();
    start_step(1s).get();
    expect_service();
}

TEST_F(LaneTest, TwoThreadsMayDestroyTheSameObject) {
    Listener listener(path());
    RawProgram thread(path());
    EXPECT_EQ(thread.say_hello(Lane::none, listener.key), listener.key);
    auto step = start_step(150ms);
    EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
    listener.calls.send(RawProgram::call_of<gyro_delegate_t::destructor>(listener.delegate));
    thread.send(RawProgram::call_of<gyro_delegate_t::destructor>(listener.delegate));
    std::this_thread::yield();
    listener.done();
    // The one that comes too late has called an object that it has not.
    std::int64_t const first = listener.calls.result();
    std::int64_t const second = thread.result();
    EXPECT_TRUE(first == 0 || second == 0) << first << " " << second;
    step.get();
    start_step(1s).get();
    expect_service();
}

TEST_F(ServiceTest, WhatAKilledProgramHadOpenedIsReleasedAndJournaled) {
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    std::string const socket = path();
    pid_t const child = ::fork();
    if (child == 0) {
        RawProgram program(socket);
        RawProgram other(socket);
        auto const key = program.say_hello();
        other.say_hello(Lane::none, key);
        program.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2);
        program.call<button_t::constructor>(0, Text("/dev/gpiochip1"), 82L, true, 2000UL);
        [[maybe_unused]] auto const told = ::write(ready[1], "", 1);
        ::pause();
        ::_exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_EQ(service_.programs().at(0).objects, 2U);
    EXPECT_EQ(service_.programs().at(0).pid, child);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(wait_until_unused());
    EXPECT_EQ(journal(), (Strings{"raw.1 connected", "raw.1 ended, 2 objects released"}));
    EXPECT_TRUE(sim::device_commands().run({device_}, "press 1s").ok) << "nobody is told";
    device_.timeline.step(2s);
    expect_service();
}

// A program that has gone while a call of its takes an hour.
class DelayedCallTest : public LaneTest {
protected:
    DelayedCallTest() { device_.timeline.run_real(); }

    void add_fault(std::string const& rule) {
        EXPECT_TRUE(sim::device_commands().run({device_}, "fault add " + rule).ok) << rule;
    }
    void wait_until_a_fault_fires() {
        for (auto const limit = std::chrono::steady_clock::now() + kLimit;
             !device_.access()->faults.never_fired().empty() && std::chrono::steady_clock::now() < limit;
             std::this_thread::yield()) {
        }
    }
    // Until nothing serves the programs that have gone.
    static bool wait_until_no_thread_serves() {
        auto const limit = std::chrono::steady_clock::now() + kLimit;
        while (serving_threads() != 0 && std::chrono::steady_clock::now() < limit) {
            std::this_thread::yield();
        }
        return serving_threads() == 0;
    }

private:
    static std::size_t serving_threads() {
        std::size_t count = 0;
        std::error_code gone;
        for (auto const& task : std::filesystem::directory_iterator("/proc/self/task", gone)) {
            std::ifstream file(task.path() / "comm");
            std::string name;
            count += std::getline(file, name) && name == "r47-serve" ? 1 : 0;
        }
        return count;
    }
};

TEST_F(DelayedCallTest, AProgramThatHasGoneIsReleasedThoughItsCallIsDelayed) {
    add_fault("rtu_t::set_exposure delay 3600000");
    {
        RawProgram program(path());
        program.say_hello();
        auto const rtu = static_cast<unsigned int>(program.call<rtu_t::constructor>(0, Text("/dev/r47-rtu-driver"), 2));
        EXPECT_TRUE(program.send(RawProgram::call_of<rtu_t::set_exposure>(rtu, 4321U)));
        wait_until_a_fault_fires();
    }
    EXPECT_TRUE(wait_until_unused());
    EXPECT_EQ(journal(), (Strings{"raw.1 connected", "raw.1 ended, 1 objects released"}));
    EXPECT_TRUE(wait_until_no_thread_serves()) << "the call itself is given up, too";
    unsigned int exposure_us = 0;
    device_.access()->rtu.get_exposure(exposure_us);
    EXPECT_EQ(exposure_us, 10000U) << "without an effect";
}

TEST_F(DelayedCallTest, AProgramThatHasGoneIsReleasedThoughItUploadsFirmware) {
    ASSERT_TRUE(sim::device_commands().run({device_}, "set hub.upload_time 60000").ok);
    device_.timeline.run_scaled(0.001);
    add_fault("gyro_t::upload_firmware delay 0.001");
    {
        Listener listener(path());
        EXPECT_TRUE(listener.calls.send(
            RawProgram::call_of<gyro_t::upload_firmware>(listener.gyro, Text("/image"), sim::Hidden<Text>{Text("x")})));
        wait_until_a_fault_fires();
    }
    EXPECT_TRUE(wait_until_unused());
    EXPECT_TRUE(wait_until_no_thread_serves());
}

TEST_F(DelayedCallTest, AProgramThatHasGoneIsReleasedThoughItsCallbackIsLate) {
    add_fault("gyro_delegate_t late 3600000");
    {
        Listener listener(path());
        EXPECT_EQ(listener.lane.next_event().object, listener.delegate);
        EXPECT_TRUE(listener.lane.send(message_of(MessageKind::begin)));
        wait_until_a_fault_fires();
    }
    EXPECT_TRUE(wait_until_unused());
    EXPECT_TRUE(wait_until_no_thread_serves());
}

TEST_F(ServiceTest, AnAcquisitionEndsWithItsCameraOrItsProgram) {
    auto const acquiring = [this] { return device_.access()->rtu.acquiring(); };
    auto const start = [&](RawProgram& program) {
        EXPECT_NE(program.say_hello(), 0U);
        auto const camera = static_cast<unsigned int>(
            program.call<camera_t::constructor>(0, hal::imx_te::imx296, Text(), Text("/dev/r47-rtu-driver"), 2));
        EXPECT_EQ(program.call<camera_t::start_acquisition>(camera), 0);
        EXPECT_TRUE(acquiring());
        return camera;
    };
    {
        RawProgram program(path());
        unsigned int const stopped = start(program);
        EXPECT_EQ(program.call<camera_t::stop_acquisition>(stopped), 0);
        EXPECT_FALSE(acquiring());
        EXPECT_EQ(program.call<camera_t::start_acquisition>(stopped), 0);
        EXPECT_EQ(program.call<camera_t::destructor>(stopped), 0);
        EXPECT_FALSE(acquiring());
    }
    {
        RawProgram program(path());
        start(program);
    }
    ASSERT_TRUE(wait_until_unused());
    EXPECT_FALSE(acquiring());
}

}  // namespace
