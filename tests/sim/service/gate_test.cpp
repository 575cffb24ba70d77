// Tests of what every call of the library passes on its way to the device.
#include "sim/service/gate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <fstream>
#include <thread>

#include "hal/autofocus.h"
#include "hal/camera.h"
#include "hal/gyro.h"
#include "hal/illumination.h"
#include "hal/rtu.h"
#include "hal/rtu_delegate.h"
#include "hal/system.h"
#include "hal/tof.h"
#include "sim/models/firmware_image.h"
#include "tests/sim/served_device.h"

namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

char const* const kRtu = "/dev/r47-rtu-driver";

class GateTest : public ServedDeviceTest {};

// A real-time unit that is there before what the test looks at.
class RtuGateTest : public ServedDeviceTest {
protected:
    // The journal behind the unit's construction.
    Lines calls() {
        Lines lines = journal();
        lines.erase(lines.begin());
        return lines;
    }

    hal::rtu_t rtu_{kRtu, 2};
    unsigned int number_ = 1;
};

TEST_F(RtuGateTest, ASuccessWritesTheOutArguments) {
    errno = 77;
    EXPECT_EQ(rtu_.set_exposure(5000), 0);
    EXPECT_EQ(rtu_.get_exposure(number_), 0);
    EXPECT_EQ(number_, 5000U);
    EXPECT_EQ(errno, 77) << "a success leaves errno alone";
    EXPECT_EQ(calls(), (Lines{"rtu_t::set_exposure(5000) = 0", "rtu_t::get_exposure() = 0 [5000]"}));
}

TEST_F(RtuGateTest, AFailureLeavesTheOutArgumentsAlone) {
    errno = 0;
    hal::dio_pin_config_t config;
    config.on_delay_time = 12345;
    EXPECT_EQ(rtu_.get_io_pin_config(6, config), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(config.on_delay_time, 12345U);
    EXPECT_EQ(calls(), Lines{"rtu_t::get_io_pin_config(6) = -1"});
    EXPECT_EQ(last_record().error, EINVAL);
}

TEST_F(RtuGateTest, ARefusedCallChangesNothing) {
    EXPECT_EQ(rtu_.set_device_status(static_cast<hal::device_state_te>(8)), -1);
    EXPECT_EQ(errno, EINVAL);
    hal::device_state_te state{};
    hal::system_t system(kRtu, 2);
    EXPECT_EQ(system.get_device_status(state), 0);
    EXPECT_NE(state, static_cast<hal::device_state_te>(8));
}

TEST_F(RtuGateTest, AMissingNodeRefusesTheCall) {
    control("node remove " + std::string(kRtu));
    EXPECT_EQ(rtu_.get_exposure(number_), -1);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(number_, 1U);
    EXPECT_EQ(rtu_.set_exposure(5000), -1);
    control("node restore " + std::string(kRtu));
    EXPECT_EQ(rtu_.get_exposure(number_), 0) << "the node is back";
    EXPECT_NE(number_, 5000U);
}

TEST_F(GateTest, AnObjectThatCouldNotBeOpenedStaysSo) {
    control("node remove " + std::string(kRtu));
    errno = 77;
    hal::rtu_t rtu(kRtu, 2);
    EXPECT_EQ(errno, 77) << "a constructor leaves errno alone";
    control("node restore " + std::string(kRtu));
    EXPECT_EQ(rtu.single_shot(true), -1);
    EXPECT_EQ(errno, ENOENT);
    hal::rtu_t const nowhere(nullptr, 2);
    unsigned char status = 9;
    EXPECT_EQ(nowhere.get_status(status), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(status, 9);
}

TEST_F(RtuGateTest, AFaultyStatusReplacesTheCall) {
    control("fault add rtu_t::get_exposure status -5 skip 1 count 1");
    EXPECT_EQ(rtu_.get_exposure(number_), 0);
    unsigned int const real = number_;
    number_ = 1;
    EXPECT_EQ(rtu_.get_exposure(number_), -5);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(number_, 1U);
    EXPECT_EQ(last_record().error, EIO);
    EXPECT_EQ(last_record().rule, 1);
    EXPECT_EQ(rtu_.get_exposure(number_), 0);
    EXPECT_EQ(number_, real);
    EXPECT_EQ(last_record().rule, 0);
}

TEST_F(RtuGateTest, AFaultyStatusKeepsTheDeviceFromTheCall) {
    control("fault add rtu_t::set_exposure status -1 count 1");
    EXPECT_EQ(rtu_.set_exposure(5000), -1);
    EXPECT_EQ(rtu_.get_exposure(number_), 0);
    EXPECT_NE(number_, 5000U);
}

TEST_F(RtuGateTest, FaultyValuesReplaceTheAnswer) {
    control("fault add rtu_t::get_exposure value 0x30");
    control("fault add rtu_t::get_revision value 0x30,-1.5");
    EXPECT_EQ(rtu_.get_exposure(number_), 0);
    EXPECT_EQ(number_, 0x30U);
    EXPECT_EQ(calls(), Lines{"rtu_t::get_exposure() = 0 [48]"});
    hal::revision_t revision{9, 9, 9, 9, 9, 9};
    EXPECT_EQ(rtu_.get_revision(revision), 0);
    EXPECT_EQ(revision.major, 0x30);
    EXPECT_EQ(revision.patch, 0);
}

TEST_F(RtuGateTest, FaultyValuesCanGoWithAStatus) {
    control("fault add rtu_t::* value 3 status 2");
    EXPECT_EQ(rtu_.get_exposure(number_), 2);
    EXPECT_EQ(number_, 3U);
}

TEST_F(RtuGateTest, AFaultyDelayTakesTimeAndAsksTheDevice) {
    control("fault add rtu_t::* delay 1500");
    EXPECT_EQ(rtu_.set_exposure(5000), 0);
    EXPECT_EQ(now(), 1500ms);
    EXPECT_EQ(last_record().start, 0s);
    EXPECT_EQ(last_record().took, 1500ms);
    EXPECT_EQ(rtu_.get_exposure(number_), 0);
    EXPECT_EQ(number_, 5000U);
}

TEST_F(RtuGateTest, WhatHappensWhileACallTakesTimeHolds) {
    control("fault add rtu_t::get_exposure delay 1500");
    device_.timeline.at(1s, [&] { control("node remove " + std::string(kRtu)); });
    EXPECT_EQ(rtu_.get_exposure(number_), -1) << "looked at again behind the delay";
    EXPECT_EQ(errno, ENODEV);
}

TEST_F(GateTest, TheDeviceIsFreeWhileACallTakesTime) {
    hal::gyro_t gyro("/dev/i2c-2", 2, nullptr, "/sys/class/gpio/gpio481/value", 200);
    std::string const image = directory_.path() + "/image";
    std::ofstream(image) << sim::make_firmware_image({sim::HubVariant::bhi260ap, 1});
    control("set hub.upload_time 2000");
    bool free_meanwhile = false;
    device_.timeline.at(1s, [&] {
        auto const lock = device_.access();
        free_meanwhile = true;
    });
    EXPECT_EQ(gyro.upload_firmware(image.c_str()), 0);
    EXPECT_TRUE(free_meanwhile);
    EXPECT_EQ(now(), 2s);
    EXPECT_EQ(last_record().took, 2s);
}

TEST_F(GateTest, APowerCycleInTheMiddleOfAnUploadIsTheEndOfIt) {
    hal::gyro_t gyro("/dev/i2c-2", 2, (directory_.path() + "/image").c_str(), "/sys/class/gpio/gpio481/value", 200);
    std::string const image = directory_.path() + "/image";
    std::ofstream(image) << sim::make_firmware_image({sim::HubVariant::bhi260ap, 1});
    for (bool const boots : {false, true}) {
        ASSERT_EQ(gyro.upload_firmware(image.c_str()), 0);
        device_.timeline.at(now() + 100ms, [&] { control("power cycle"); });
        errno = 0;
        EXPECT_EQ(boots ? gyro.boot() : gyro.upload_firmware(image.c_str()), -1);
        EXPECT_EQ(errno, EIO);
        EXPECT_FALSE(device_.access()->hub.running()) << "in its boot loader, as after power-on";
    }
    EXPECT_EQ(gyro.upload_firmware(image.c_str()), 0);
}

TEST_F(GateTest, AMeasurementThatThePowerLeftFails) {
    hal::tof_t tof("/dev/r47-tof-driver", 2);
    VL53L5CX_ResultsData data{};
    EXPECT_EQ(tof.shot(data), 0);
    device_.timeline.at(now() + 1ms, [&] { control("power cycle"); });
    EXPECT_EQ(tof.shot(data), -1);
}

TEST_F(GateTest, OtherResultsAreRefusedAsFalseAndZero) {
    hal::autofocus_t autofocus("/dev/r47-autofocus-driver", 2);
    EXPECT_TRUE(autofocus.is_present());
    control("node remove /dev/r47-autofocus-driver");
    EXPECT_FALSE(autofocus.set_present());
    EXPECT_TRUE(autofocus.is_present()) << "what the object knows does not need the device";
    EXPECT_EQ(hal::camera_t::determine_imxtype(), hal::imx_te::imx296);
    control("fit none");
    EXPECT_EQ(hal::camera_t::determine_imxtype(), hal::imx_te::none);
    EXPECT_FALSE(hal::autofocus_t("/dev/r47-autofocus-driver", 2).is_present());
}

TEST_F(GateTest, FaultsReplaceOtherResults) {
    hal::autofocus_t const autofocus("/dev/r47-autofocus-driver", 2);
    hal::camera_t camera(hal::imx_te::imx296, nullptr, kRtu, 2);
    control("fault add autofocus_t::is_present status 0");
    control("fault add camera_t::get_imxtype value 2");
    EXPECT_FALSE(autofocus.is_present());
    EXPECT_EQ(camera.get_imxtype(), hal::imx_te::imx567);
    Lines const lines = journal();
    EXPECT_EQ(Lines(lines.end() - 2, lines.end()),
              (Lines{"autofocus_t::is_present() = false", "camera_t::get_imxtype() = 2"}));
}

TEST_F(GateTest, StaticOperationsHaveNoObject) {
    EXPECT_EQ(hal::camera_t::determine_imxtype(), hal::imx_te::imx296);
    EXPECT_EQ(journal(), Lines{"camera_t::determine_imxtype() = 1"});
    EXPECT_EQ(last_record().object, 0U);
}

TEST_F(GateTest, ConstructionsAndDestructionsAreJournaled) {
    { hal::rtu_t const rtu(kRtu, 2); }
    EXPECT_EQ(journal(), (Lines{"rtu_t::rtu_t(\"/dev/r47-rtu-driver\", 2)", "rtu_t::~rtu_t()"}));
}

TEST_F(GateTest, AConstructorOfTheProgramIsJournaledAsThatOfItsBase) {
    { hal::autofocus_t const autofocus(kRtu, 2); }
    EXPECT_EQ(journal(), (Lines{"base_t::base_t(\"/dev/r47-rtu-driver\", 2)", "autofocus_t::set_present() = true",
                                "base_t::~base_t()"}));
}

TEST_F(GateTest, AModuleWithoutAConstructorInTheLibraryIsJournaledWhenItIsMade) {
    hal::illumination_t const illumination("/dev/r47-illumination-driver", 2);
    EXPECT_EQ(journal(), Lines{"base_t::base_t(\"/dev/r47-illumination-driver\", 2)"});
}

TEST_F(GateTest, ABareModuleIsJournaledAsSuch) {
    { hal::base_t const base(nullptr, 3); }
    EXPECT_EQ(journal(), (Lines{"base_t::base_t(null, 3)", "base_t::~base_t()"}));
}

TEST_F(GateTest, ABareModuleAnswersForTheModuleOfItsNode) {
    unsigned char status = 9;
    EXPECT_EQ(hal::base_t(kRtu, 2).get_status(status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(hal::base_t("/dev/r47-tof-driver", 2).get_status(status), -1);
    EXPECT_EQ(errno, ENOTTY);
}

TEST_F(GateTest, AFaultyConstructionLeavesTheObjectUnopened) {
    control("fault add system_t::system_t status -1");
    hal::system_t system(kRtu, 2);
    EXPECT_EQ(system.trigger_heartbeat(), -1);
    EXPECT_EQ(errno, EIO);
}

TEST_F(GateTest, ObjectsAreNumberedInTheOrderOfTheirConstruction) {
    hal::rtu_t const first(kRtu, 2);
    EXPECT_EQ(last_record().object, 1U);
    { hal::rtu_t const second(kRtu, 2); }
    EXPECT_EQ(last_record().object, 2U);
    hal::rtu_t const third(kRtu, 2);
    EXPECT_EQ(last_record().object, 3U) << "numbers are not used again";
}

TEST_F(GateTest, TheStateIsSharedByAllThatShowIt) {
    hal::rtu_t rtu(kRtu, 2);
    hal::system_t system(kRtu, 2);
    hal::device_state_te state{};
    EXPECT_EQ(rtu.set_device_status(hal::device_state_te::warning), 0);
    EXPECT_EQ(system.get_device_status(state), 0);
    EXPECT_EQ(state, hal::device_state_te::warning);
}

TEST_F(GateTest, TheDelegateReadsWhatTheUnitTells) {
    hal::rtu_delegate_t const delegate(kRtu, 2);
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
    hal::camera_t camera(hal::imx_te::none, nullptr, kRtu, 2);
    EXPECT_EQ(camera.get_imxtype(), hal::imx_te::none);
    EXPECT_EQ(camera.set_gain(1), -1);
}

TEST_F(GateTest, CallsAreOfTheThreadThatMakesThem) {
    hal::rtu_t rtu(kRtu, 2);
    EXPECT_EQ(last_record().thread, 1U);
    std::thread([&] { rtu.set_exposure(1); }).join();
    EXPECT_EQ(last_record().thread, 2U);
    rtu.set_exposure(2);
    EXPECT_EQ(last_record().thread, 1U);
    EXPECT_EQ(last_record().program, "sim_tests.1");
}

TEST_F(GateTest, ThreadsMayCallAtTheSameTime) {
    constexpr int kThreads = 8;
    constexpr unsigned int kCalls = 200;
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&failures] {
            hal::rtu_t rtu(kRtu, 2);
            for (unsigned int call = 0; call < kCalls; ++call) {
                unsigned int number = 0;
                failures += rtu.set_exposure(5000) + rtu.get_exposure(number) + (number == 5000 ? 0 : 1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(journal().size(), kThreads * (2 + 2 * kCalls));
}

TEST_F(GateTest, EachOfEightThreadsGetsItsOwnAnswer) {
    constexpr unsigned int kThreads = 8;
    constexpr unsigned int kCalls = 200;
    hal::rtu_t rtu(kRtu, 2);
    std::vector<std::thread> threads;
    std::atomic<unsigned int> wrong{0};
    for (unsigned int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&rtu, &wrong, thread] {
            for (unsigned int call = 0; call < kCalls; ++call) {
                unsigned int const number = kThreads * call + thread;
                unsigned int answer = 0;
                if (thread == 6) {
                    wrong +=
                        rtu.set_trigger_prohibited_time(number) != 0 || rtu.get_trigger_prohibited_time(answer) != 0;
                } else if (thread == 7) {
                    wrong += rtu.set_exposure_offset(number) != 0 || rtu.get_exposure_offset(answer) != 0;
                } else {
                    auto const pin = static_cast<unsigned char>(thread);
                    hal::dio_pin_config_t config;
                    config.pulse_time = static_cast<int>(number);
                    wrong += rtu.set_io_pin_config(pin, config) != 0 || rtu.get_io_pin_config(pin, config) != 0;
                    answer = static_cast<unsigned int>(config.pulse_time);
                }
                wrong += answer == number ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0U);
}

TEST_F(GateTest, AMeasurementEndsWithItsSensor) {
    hal::tof_t sensor("/dev/r47-tof-driver", 2);
    sensor.number_of_measurements = 4;
    VL53L5CX_ResultsData results{};
    EXPECT_EQ(sensor.shot(results), 0);
    EXPECT_EQ(now(), 4s) << "no longer for being asked whether it is done";
    device_.timeline.at(4250ms, [this] { control("node remove /dev/r47-tof-driver"); });
    errno = 0;
    EXPECT_EQ(sensor.shot(results), -1);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(now(), 4300ms);
}

TEST_F(GateTest, WithoutADeviceEveryOperationIsRefusedAndThatIsSaidOnce) {
    hal::rtu_t rtu(kRtu, 2);
    hal::autofocus_t autofocus("/dev/r47-autofocus-driver", 2);
    service_.stop();
    testing::internal::CaptureStderr();
    unsigned int number = 1;
    errno = 0;
    EXPECT_EQ(rtu.get_exposure(number), -1);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(number, 1U);
    EXPECT_FALSE(autofocus.set_present());
    EXPECT_EQ(hal::camera_t::determine_imxtype(), hal::imx_te::none);
    hal::system_t late(kRtu, 2);
    EXPECT_EQ(late.trigger_heartbeat(), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "libhal: the device has gone\n");
}

}  // namespace
