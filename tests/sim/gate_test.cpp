// Tests of what every operation of the library passes.
#include "sim/library/gate.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "sim/control/fault_words.h"

#include <cerrno>
#include <fstream>

#include "hal/autofocus.h"
#include "hal/camera.h"
#include "hal/illumination.h"
#include "hal/rtu.h"
#include "hal/rtu_delegate.h"
#include "hal/system.h"
#include "tests/sim/temporary_directory.h"

namespace {

using namespace std::chrono_literals;
using sim::Device;
using sim::in;
using sim::Object;
using sim::out;

// Objects on a node that is a plain file, the journal's lines without their time, and a stepped clock.
class GateTest : public testing::Test {
protected:
    GateTest() {
        device_.timeline.run_stepped();
        follower_ = device_.journal.follow([this](std::string const& line) {
            std::size_t const object = line.find(' ') + 1;
            journal_ += line.substr(line.find(' ', object) + 1);
        });
    }
    ~GateTest() override {
        device_.journal.unfollow(follower_);
        auto const lock = device_.lock();
        device_.faults.clear();
    }

    // Makes the file.
    static std::string made(std::string const& path) {
        std::ofstream const file(path);
        return path;
    }

    void add_fault(sim::Words const& words) {
        sim::FaultRule rule;
        ASSERT_EQ(sim::parse_fault_rule(words, rule), "");
        auto const lock = device_.lock();
        device_.faults.add(rule);
    }
    // A call that answers `status` and, in the device's copies, 5 and 2.5.
    int call(unsigned int& number, float& fraction, int status = 0) {
        return sim::gate(&object_, "rtu_t::get_exposure", in(7, "x"), out(number, fraction),
                         [&](Device&, auto& n, auto& f) {
                             ++asked_;
                             n = 5;
                             f = 2.5F;
                             return status;
                         });
    }

    Device& device_ = Device::instance();
    TemporaryDirectory directory_;
    std::string node_ = made(directory_.path() + "/node");
    Object object_{{node_.c_str()}};
    int asked_ = 0;
    unsigned int number_ = 1;
    float fraction_ = 1;
    std::string journal_;

private:
    int follower_ = 0;
};

class AnnouncedGateTest : public GateTest {
protected:
    AnnouncedGateTest() { object_.announced = true; }
};

TEST_F(AnnouncedGateTest, ASuccessWritesTheOutArguments) {
    errno = 77;
    EXPECT_EQ(call(number_, fraction_), 0);
    EXPECT_EQ(number_, 5U);
    EXPECT_EQ(fraction_, 2.5F);
    EXPECT_EQ(errno, 77) << "a success leaves errno alone";
    EXPECT_EQ(journal_, "rtu_t::get_exposure(7, \"x\") = 0 [5, 2.5]\n");
}

TEST_F(AnnouncedGateTest, AFailureLeavesTheOutArgumentsAlone) {
    errno = 0;
    EXPECT_EQ(call(number_, fraction_, 127), 127);
    EXPECT_EQ(number_, 1U);
    EXPECT_EQ(fraction_, 1.0F);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(journal_, "rtu_t::get_exposure(7, \"x\") = 127\n");
}

TEST_F(AnnouncedGateTest, AMissingNodeRefusesTheCall) {
    ::unlink(node_.c_str());
    EXPECT_EQ(call(number_, fraction_), -1);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(asked_, 0);
    EXPECT_EQ(number_, 1U);
    made(node_);
    EXPECT_EQ(call(number_, fraction_), 0) << "the node is back";
}

TEST_F(AnnouncedGateTest, AnObjectThatCouldNotBeOpenedStaysSo) {
    std::string const other = directory_.path() + "/other";
    Object object{{other.c_str()}};
    object.announced = true;
    made(other);
    auto const status = sim::gate(&object, "rtu_t::single_shot", [](Device&) { return 0; });
    EXPECT_EQ(status, -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(AnnouncedGateTest, AFaultyStatusReplacesTheCall) {
    add_fault({"rtu_t::get_exposure", "status", "-5", "skip", "1", "count", "1"});
    EXPECT_EQ(call(number_, fraction_), 0);
    number_ = 1;
    EXPECT_EQ(call(number_, fraction_), -5);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(number_, 1U);
    EXPECT_EQ(asked_, 1);
    EXPECT_EQ(call(number_, fraction_), 0);
    EXPECT_EQ(journal_,
              "rtu_t::get_exposure(7, \"x\") = 0 [5, 2.5]\n"
              "rtu_t::get_exposure(7, \"x\") = -5\n"
              "rtu_t::get_exposure(7, \"x\") = 0 [5, 2.5]\n");
}

TEST_F(AnnouncedGateTest, FaultyValuesReplaceTheAnswer) {
    add_fault({"rtu_t::*", "value", "0x30,-1.5"});
    EXPECT_EQ(call(number_, fraction_), 0);
    EXPECT_EQ(number_, 0x30U);
    EXPECT_EQ(fraction_, -1.5F);
    EXPECT_EQ(asked_, 0);
    EXPECT_EQ(journal_, "rtu_t::get_exposure(7, \"x\") = 0 [48, -1.5]\n");
}

TEST_F(AnnouncedGateTest, FaultyValuesCanGoWithAStatus) {
    add_fault({"rtu_t::*", "value", "3,4", "status", "2"});
    EXPECT_EQ(call(number_, fraction_), 2);
    EXPECT_EQ(number_, 3U);
    EXPECT_EQ(fraction_, 4.0F);
}

TEST_F(AnnouncedGateTest, AFaultyDelayTakesTimeAndAsksTheDevice) {
    add_fault({"rtu_t::*", "delay", "1500"});
    auto const before = device_.now();
    EXPECT_EQ(call(number_, fraction_), 0);
    EXPECT_EQ(device_.now() - before, 1500ms);
    EXPECT_EQ(asked_, 1);
}

TEST_F(AnnouncedGateTest, TheDeviceIsAskedUnderItsLockAndTimePassesWithoutIt) {
    auto const before = device_.now();
    bool free_meanwhile = false;
    device_.timeline.at(before + 1s, [&] {
        auto const lock = device_.lock();
        free_meanwhile = true;
    });
    auto const status = sim::gate(&object_, "rtu_t::single_shot", [](Device& device) {
        device.take_time(2s);
        return 0;
    });
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(free_meanwhile);
    EXPECT_EQ(device_.now() - before, 2s);
}

TEST_F(AnnouncedGateTest, OtherResultsAreRefusedAsFalseAndZero) {
    ::unlink(node_.c_str());
    EXPECT_FALSE(sim::gate(&object_, "autofocus_t::set_present", [](Device&) { return true; }));
    EXPECT_TRUE(sim::recall(&object_, "autofocus_t::is_present", [](Device&) { return true; }))
        << "what the object knows does not need the device";
}

TEST_F(AnnouncedGateTest, FaultsReplaceOtherResults) {
    add_fault({"autofocus_t::is_present", "status", "1"});
    add_fault({"camera_t::get_imxtype", "value", "2"});
    EXPECT_TRUE(sim::recall(&object_, "autofocus_t::is_present", [](Device&) { return false; }));
    EXPECT_EQ(sim::recall(&object_, "camera_t::get_imxtype", [](Device&) { return hal::imx_te::none; }),
              hal::imx_te::imx567);
    EXPECT_EQ(journal_, "autofocus_t::is_present() = true\ncamera_t::get_imxtype() = 2\n");
}

TEST_F(AnnouncedGateTest, StaticOperationsHaveNoObject) {
    std::string line;
    int const id = device_.journal.follow([&](std::string const& written) { line = written; });
    hal::camera_t::determine_imxtype();
    device_.journal.unfollow(id);
    EXPECT_NE(line.find(" 0 camera_t::determine_imxtype() = "), std::string::npos) << line;
}

TEST_F(GateTest, ConstructionsAndDestructionsAreJournaled) {
    { hal::rtu_t const rtu(node_.c_str(), 2); }
    EXPECT_EQ(journal_, "rtu_t::rtu_t(\"" + node_ + "\", 2)\nrtu_t::~rtu_t()\n");
}

TEST_F(GateTest, AConstructorOfTheProgramIsJournaledAsThatOfItsBase) {
    { hal::autofocus_t const autofocus(node_.c_str(), 2); }
    EXPECT_EQ(journal_, "base_t::base_t(\"" + node_ + "\", 2)\nautofocus_t::set_present() = true\nbase_t::~base_t()\n");
}

TEST_F(GateTest, AModuleWithoutAConstructorInTheLibraryIsJournaledWhenItIsMade) {
    hal::illumination_t const illumination("/dev/r47-illumination-driver", 2);
    EXPECT_EQ(journal_, "base_t::base_t(\"/dev/r47-illumination-driver\", 2)\n");
}

TEST_F(GateTest, ABareModuleIsJournaledAsSuch) {
    { hal::base_t const base(nullptr, 3); }
    EXPECT_EQ(journal_, "base_t::base_t(null, 3)\nbase_t::~base_t()\n");
}

TEST_F(GateTest, AFaultyConstructionLeavesTheObjectUnopened) {
    add_fault({"system_t::system_t", "status", "-1"});
    hal::system_t system(node_.c_str(), 2);
    EXPECT_EQ(system.trigger_heartbeat(), -1);
    EXPECT_EQ(errno, EIO);
}

TEST_F(GateTest, ObjectsAreNumberedInTheOrderOfTheirConstruction) {
    hal::rtu_t const first(node_.c_str(), 2);
    std::string line;
    int const id = device_.journal.follow([&](std::string const& written) { line = written; });
    hal::rtu_t const second(node_.c_str(), 2);
    device_.journal.unfollow(id);
    std::string const expected = " " + std::to_string(object_.number + 2) + " rtu_t::rtu_t(";
    EXPECT_NE(line.find(expected), std::string::npos) << line;
}

TEST_F(GateTest, TheStateIsSharedByAllThatShowIt) {
    hal::rtu_t rtu(node_.c_str(), 2);
    hal::system_t system(node_.c_str(), 2);
    hal::device_state_te state{};
    EXPECT_EQ(rtu.set_device_status(hal::device_state_te::warning), 0);
    EXPECT_EQ(system.get_device_status(state), 0);
    EXPECT_EQ(state, hal::device_state_te::warning);
    EXPECT_EQ(system.set_device_status(static_cast<hal::device_state_te>(8)), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(system.get_device_status(state), 0);
    EXPECT_EQ(state, hal::device_state_te::warning);
}

TEST_F(GateTest, TheDelegateReadsWhatTheUnitTells) {
    hal::rtu_delegate_t const delegate(node_.c_str(), 2);
    unsigned char status = 9;
    hal::revision_t revision{};
    unsigned int timeout_ms = 0;
    EXPECT_EQ(delegate.get_status(status), 0);
    EXPECT_EQ(delegate.get_revision(revision), 0);
    EXPECT_EQ(delegate.get_heartbeat_timeout(timeout_ms), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(revision.minor, 6);
    EXPECT_EQ(timeout_ms, 1000U);
}

TEST_F(GateTest, ACameraWithoutASensorIsNeverOpened) {
    hal::camera_t camera(hal::imx_te::none, nullptr, node_.c_str(), 2);
    EXPECT_EQ(camera.get_imxtype(), hal::imx_te::none);
    EXPECT_EQ(camera.set_gain(1), -1);
}

TEST_F(GateTest, CallbacksAreJournaledAsSuch) {
    sim::journal_callback(3, "gyro_delegate_t", in(37));
    EXPECT_EQ(journal_, "callback gyro_delegate_t(37)\n");
}

}  // namespace
