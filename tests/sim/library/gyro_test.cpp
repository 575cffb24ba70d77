// Tests of the callbacks of a gyro_t and of those who listen through it.
#include "hal/gyro.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <optional>

#include "hal/gyro_alarm.h"
#include "hal/gyro_delegate.h"
#include "tests/sim/served_gyro.h"

namespace {

using namespace std::chrono_literals;
using hal::cb_struct_te;
using hal::gyro_alarm_t;
using hal::gyro_delegate_t;
using Strings = std::vector<std::string>;

// Callbacks are looked at when a step is done, so none of them runs then.
class GyroObjectTest : public ServedGyroTest {
protected:
    static auto counter(int& count) {
        return [&count](unsigned char, cb_struct_te, void*) { ++count; };
    }
    auto noter(std::string const& name) {
        return [this, name](unsigned char, cb_struct_te, void*) { seen_.push_back(name); };
    }

    int samples_ = 0;
    Strings seen_;
};

TEST_F(GyroObjectTest, ADelegateGetsEachSampleAtItsTime) {
    gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
    activate(37, 12.5);
    step(800ms);
    EXPECT_EQ(samples_, 9);  // the tenth is 1 ms late, by its latency
    step(1ms);
    EXPECT_EQ(samples_, 10);
}

TEST_F(GyroObjectTest, ADelegateGetsTheSamplesOfItsSensorWithTheirData) {
    hal::quaternion_s16_t quaternion{};
    cb_struct_te kind{};
    int id = 0;
    gyro_delegate_t const delegate(*gyro_, 37, [&](unsigned char sensor, cb_struct_te sample_kind, void* data) {
        id = sensor;
        kind = sample_kind;
        quaternion = *static_cast<hal::quaternion_s16_t*>(data);
    });
    gyro_delegate_t const other(*gyro_, 4, counter(samples_));
    gyro_delegate_t const none(*gyro_, 37, nullptr);
    control("set orientation.noise 0");
    control("tilt 0 0 90");
    activate(37, 12.5);
    step(101ms);
    EXPECT_EQ(id, 37);
    EXPECT_EQ(kind, cb_struct_te::quaternion_s16);
    EXPECT_NEAR(quaternion.x, 11585, 2);  // sin 45 degrees, of 16384
    EXPECT_NEAR(quaternion.w, 11585, 2);
    EXPECT_EQ(samples_, 0) << "of another sensor";
}

TEST_F(GyroObjectTest, TheRecordsComeFirstAndTheOthersByTheirConstruction) {
    gyro_->callback_records[1] = {37, noter("record 1")};
    gyro_->callback_records[0] = {37, noter("record 0")};
    gyro_delegate_t const first(*gyro_, 37, noter("first"));
    gyro_alarm_t alarm(*gyro_, 37);
    alarm.on_position_left = [this] { seen_.emplace_back("alarm"); };
    gyro_delegate_t const last(*gyro_, 37, noter("last"));
    control("tilt 0 90 0");
    gyro_->irq_callback_hold(false);
    activate(37, 12.5);
    step(101ms);
    EXPECT_EQ(seen_, (Strings{"record 0", "record 1", "first", "alarm", "last"}));
}

TEST_F(GyroObjectTest, TheJournalHasEachFunctionThatIsCalled) {
    gyro_->callback_records[0] = {37, counter(samples_)};
    gyro_->callback_records[1] = {38, counter(samples_)};
    gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
    gyro_alarm_t alarm(*gyro_, 37);
    alarm.on_position_left = [this] { ++samples_; };
    control("tilt 0 90 0");
    gyro_->irq_callback_hold(false);
    std::size_t const before = journal().size();
    activate(37, 12.5);
    step(101ms);
    Strings lines = journal();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(lines, (Strings{"callback gyro_t::callback_records(0, 37)", "callback gyro_delegate_t(37)",
                              "callback gyro_alarm_t::on_position_left()"}));
}

// Where nobody listens, none of them takes an event of its own.
TEST_F(GyroObjectTest, SamplesCountWhetherSomebodyListensOrNot) {
    auto const count = [this] { return device_.access()->hub.samples(); };
    activate(37, 400);
    step(1s);
    EXPECT_EQ(count(), 399U);
    {
        gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
        step(1s);
        EXPECT_EQ(samples_, 400);
        EXPECT_EQ(count(), 799U);
        gyro_->irq_callback_hold(true);
        step(1s);
        gyro_->irq_callback_hold(false);
        EXPECT_EQ(count(), 1199U);
        step(1s);
        EXPECT_EQ(samples_, 800);
    }
    gyro_->irq_callback_hold(true);
    step(24h);
    EXPECT_EQ(count(), 400U * (4 + 86400) - 1);
}

TEST_F(GyroObjectTest, AFaultRuleMeetsCallbacksThatNoJournalHas) {
    unwatch();
    gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
    activate(37, 12.5);
    step(81ms);
    EXPECT_EQ(samples_, 1);
    control("fault add gyro_delegate_t drop");
    step(80ms);
    EXPECT_EQ(samples_, 1);
    control("fault clear");
    control("fault add gyro_delegate_t double");
    step(80ms);
    EXPECT_EQ(samples_, 3);
    control("fault clear");
    step(80ms);
    EXPECT_EQ(samples_, 4);
}

TEST_F(GyroObjectTest, SamplesWhileHeldAreNotDeliveredLater) {
    gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
    activate(37, 12.5);
    step(200ms);
    gyro_->irq_callback_hold(true);
    step(500ms);
    EXPECT_EQ(samples_, 2);
    gyro_->irq_callback_hold(false);
    step(100ms);
    EXPECT_EQ(samples_, 3);
}

TEST_F(GyroObjectTest, RecordsAndAlarmsWaitForTheFirstRelease) {
    gyro_->callback_records[0] = {37, counter(samples_)};
    gyro_alarm_t alarm(*gyro_, 37);
    int left = 0;
    alarm.on_position_left = [&left] { ++left; };
    control("tilt 0 90 0");
    activate(37, 12.5);
    step(1s);
    EXPECT_EQ(samples_, 0);
    EXPECT_EQ(left, 0);
    gyro_->irq_callback_hold(false);
    step(800ms);
    EXPECT_EQ(samples_, 10);
    EXPECT_EQ(left, 1);
}

TEST_F(ServedDeviceTest, RecordsNeedTheCallbacksToBeInstalled) {
    hal::gyro_t gyro("/dev/i2c-2", 2, nullptr, "/sys/class/gpio/gpio481/value", 200);
    int samples = 0;
    gyro.callback_records[0] = {37, [&samples](unsigned char, cb_struct_te, void*) { ++samples; }};
    {
        auto const device = device_.access();
        device->hub.boot(sim::make_firmware_image({sim::HubVariant::bhi260ap, 1}));
        EXPECT_EQ(device->hub.activate(37, 12.5F, 1, device.now()), 0);
    }
    gyro.irq_callback_hold(false);
    step(101ms);
    EXPECT_EQ(samples, 0);
    EXPECT_EQ(gyro.install_callbacks(), 0);
    step(100ms);
    EXPECT_EQ(samples, 1);
}

TEST_F(GyroObjectTest, AnInstallationEndsWithItsObject) {
    auto const installed = [this] {
        return sim::value_text(device_.access()->properties.all().at("hub.callbacks").get());
    };
    auto other = make_gyro();
    int others = 0;
    other->callback_records[0] = {37, counter(others)};
    gyro_->callback_records[0] = {37, counter(samples_)};
    gyro_->irq_callback_hold(false);
    other->irq_callback_hold(false);
    activate(37, 12.5);
    step(81ms);
    EXPECT_EQ(samples_, 1);
    EXPECT_EQ(others, 0) << "another's installation is not its own";
    EXPECT_EQ(other->install_callbacks(), 0);
    EXPECT_EQ(other->install_callbacks(), 0);
    step(80ms);
    EXPECT_EQ(others, 1);
    other.reset();
    EXPECT_EQ(installed(), "true") << "the first object's";
    gyro_.reset();
    EXPECT_EQ(installed(), "false");
    other = make_gyro();
    other->callback_records[0] = {37, counter(others)};
    other->irq_callback_hold(false);
    step(80ms);
    EXPECT_EQ(others, 1);
}

TEST_F(GyroObjectTest, AHubWithoutFirmwareInstallsNothing) {
    auto const other = make_gyro();
    control("power cycle");
    EXPECT_EQ(other->install_callbacks(), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(gyro_->install_callbacks(), -1) << "not even again";
}

TEST_F(GyroObjectTest, ADelegateHearsOfMotion) {
    gyro_delegate_t const delegate(*gyro_, 77, [this](unsigned char, cb_struct_te kind, void* data) {
        EXPECT_EQ(kind, cb_struct_te::none);
        EXPECT_EQ(data, nullptr);
        ++samples_;
    });
    activate(77, 1);
    step(10s);
    EXPECT_EQ(samples_, 0);
    control("tilt 0 20 0");
    step(1001ms);
    EXPECT_EQ(samples_, 1);
}

TEST_F(GyroObjectTest, TheInterruptTellsOfSamplesThatNobodyReads) {
    auto const status = [this] {
        auto const device = device_.access();
        std::string report;
        device->hub.report_interrupt(report);
        return report.substr(report.find("0x", report.find("0x2D") + 4), 4);
    };
    EXPECT_EQ(status(), "0x81");
    activate(37, 12.5);
    step(1s);
    EXPECT_EQ(status(), "0x00");
    gyro_->irq_callback_hold(true);
    step(1s);
    EXPECT_EQ(status(), "0x11");
    step(1s);
    auto const other = make_gyro();
    step(1s);
    EXPECT_EQ(status(), "0x00") << "one that is not held has read them";
}

TEST_F(ServedDeviceTest, ADamagedImageFailsBootAndUpload) {
    std::string const path = directory_.path() + "/image.fw";
    std::ofstream(path, std::ios::binary) << sim::make_firmware_image({sim::HubVariant::bhi260ap, 1});
    auto const runs = [this] { return device_.access()->hub.running(); };
    hal::gyro_t gyro("/dev/i2c-2", 2, path.c_str(), "/sys/class/gpio/gpio481/value", 200);
    EXPECT_EQ(gyro.boot(), 0);
    control("set hub.firmware.damaged true");
    EXPECT_TRUE(runs()) << "from the next image on";
    EXPECT_EQ(gyro.upload_firmware(path.c_str()), -1);
    EXPECT_EQ(errno, EBADMSG);
    EXPECT_FALSE(runs());
    EXPECT_EQ(gyro.boot(), -1);
    EXPECT_EQ(errno, EBADMSG);
    control("set hub.firmware.damaged false");
    EXPECT_EQ(gyro.upload_firmware(path.c_str()), 0);
    EXPECT_TRUE(runs());
}

TEST_F(GyroObjectTest, WhatIsSetWhileHeldHoldsFromTheRelease) {
    int others = 0;
    gyro_->callback_records[0] = {37, counter(samples_)};
    gyro_->irq_callback_hold(false);
    activate(37, 12.5);
    step(150ms);
    gyro_->irq_callback_hold(true);
    gyro_->callback_records[0] = {37, counter(others)};
    gyro_->irq_callback_hold(false);
    step(80ms);
    gyro_->irq_callback_hold(true);
    gyro_->callback_records[0] = {37, nullptr};
    gyro_->irq_callback_hold(false);
    step(1s);
    EXPECT_EQ(samples_, 1);
    EXPECT_EQ(others, 1);
}

TEST_F(GyroObjectTest, AnAlarmTellsEachTransitionOnce) {
    gyro_alarm_t alarm(*gyro_, 37);
    alarm.on_position_left = [this] { seen_.emplace_back("left"); };
    alarm.on_position_reached = [this] { seen_.emplace_back("reached"); };
    gyro_->irq_callback_hold(false);
    activate(37, 12.5);
    step(1s);
    EXPECT_EQ(seen_, Strings{}) << "in position at first";
    control("tilt 0 90 0");
    step(1s);
    EXPECT_EQ(seen_, Strings{"left"});
    control("tilt 0 0 0");
    step(1s);
    EXPECT_EQ(seen_, (Strings{"left", "reached"}));
    step(1ms);  // what is measured before the next tilt is delivered
    control("tilt 0 90 0");
    EXPECT_EQ(alarm.teach_current_position(), 0);
    step(1s);
    EXPECT_EQ(seen_, (Strings{"left", "reached"})) << "taught where it is";
}

TEST_F(GyroObjectTest, AnAlarmWithoutAFunctionIsSkipped) {
    gyro_alarm_t alarm(*gyro_, 37);
    alarm.on_position_reached = [this] { seen_.emplace_back("reached"); };
    gyro_->irq_callback_hold(false);
    activate(37, 12.5);
    control("tilt 0 90 0");
    step(1s);
    control("tilt 0 0 0");
    step(1s);
    EXPECT_EQ(seen_, Strings{"reached"});
}

TEST_F(GyroObjectTest, AnAlarmRefusesLimitsThatAreNone) {
    gyro_alarm_t alarm(*gyro_, 37);
    EXPECT_EQ(alarm.set_angle_limit(180), 0);
    EXPECT_EQ(alarm.set_angle_limit(-1), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(alarm.teach_current_position(), -1) << "its sensor is off";
}

TEST_F(GyroObjectTest, ACallbackMayHoldAndTheNextOneGetsNothing) {
    gyro_delegate_t const holding(*gyro_, 37,
                                  [&](unsigned char, cb_struct_te, void*) { gyro_->irq_callback_hold(true); });
    gyro_delegate_t const next(*gyro_, 37, counter(samples_));
    activate(37, 12.5);
    step(1s);
    EXPECT_EQ(samples_, 0);
}

// Each with and without a journal: the library is sent an event for each record then, or one for all.
TEST_F(GyroObjectTest, RecordsAreCalledInTheirOrderWhoeverWatches) {
    gyro_->irq_callback_hold(false);
    activate(37, 12.5);
    step(1ms);
    for (bool const watched : {true, false}) {
        seen_.clear();
        gyro_->callback_records[1] = {38, noter("other sensor")};
        gyro_->callback_records[0] = {37, [this](unsigned char, cb_struct_te, void*) {
                                          seen_.emplace_back("record 0");
                                          gyro_->callback_records[1] = {37, noter("record 1")};
                                      }};
        step(80ms);
        EXPECT_EQ(seen_, (Strings{"record 0", "record 1"})) << watched;
        gyro_->callback_records[0].function = nullptr;
        step(80ms);
        EXPECT_EQ(seen_, (Strings{"record 0", "record 1", "record 1"})) << watched;
        if (watched) {
            unwatch();
        }
    }
}

TEST_F(GyroObjectTest, ARecordThatHoldsKeepsTheSampleFromTheNextOne) {
    gyro_->callback_records[0] = {37, [this](unsigned char, cb_struct_te, void*) {
                                      seen_.emplace_back("record 0");
                                      gyro_->irq_callback_hold(true);
                                      gyro_->irq_callback_hold(false);
                                  }};
    gyro_->callback_records[1] = {37, counter(samples_)};
    gyro_->irq_callback_hold(false);
    activate(37, 12.5);
    step(81ms);
    unwatch();
    step(80ms);
    EXPECT_EQ(seen_.size(), 2U);
    EXPECT_EQ(samples_, 0);
}

TEST_F(GyroObjectTest, ARecordMayDestroyItsObject) {
    unwatch();
    gyro_->callback_records[0] = {37, [this](unsigned char, cb_struct_te, void*) {
                                      gyro_.reset();
                                      seen_.emplace_back("record 0");
                                  }};
    gyro_->callback_records[1] = {37, counter(samples_)};
    gyro_->irq_callback_hold(false);
    activate(37, 10);
    step(1s);
    EXPECT_EQ(seen_, (Strings{"record 0"}));
    EXPECT_EQ(samples_, 0);
}

TEST_F(GyroObjectTest, ACallbackMayDestroyItsOwnObject) {
    std::optional<gyro_delegate_t> delegate;
    delegate.emplace(*gyro_, 37, [&](unsigned char, cb_struct_te, void*) {
        ++samples_;
        delegate.reset();
    });
    activate(37, 12.5);
    step(1s);
    EXPECT_EQ(samples_, 1);
    EXPECT_FALSE(delegate);
}

TEST_F(GyroObjectTest, ACallbackMayDestroyTheNextOne) {
    std::optional<gyro_delegate_t> next;
    gyro_delegate_t const first(*gyro_, 37, [&](unsigned char, cb_struct_te, void*) { next.reset(); });
    next.emplace(*gyro_, 37, counter(samples_));
    activate(37, 12.5);
    step(1s);
    EXPECT_EQ(samples_, 0);
}

TEST_F(GyroObjectTest, ACallbackMayConstructAnother) {
    std::optional<gyro_delegate_t> other;
    gyro_delegate_t const first(*gyro_, 37, [&](unsigned char, cb_struct_te, void*) {
        if (!other) {
            other.emplace(*gyro_, 37, counter(samples_));
        }
    });
    activate(37, 12.5);
    step(301ms);
    EXPECT_EQ(samples_, 2);
}

TEST_F(GyroObjectTest, ACallbackMayAskTheDeviceForWhatTakesTime) {
    control("fault add gyro_t::get_status delay 50");
    unsigned char status = 9;
    gyro_delegate_t const delegate(*gyro_, 37, [&](unsigned char, cb_struct_te, void*) {
        if (samples_++ == 0) {
            EXPECT_EQ(gyro_->get_status(status), 0);
        }
    });
    activate(37, 12.5);
    step(850ms);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(samples_, 10) << "they come nevertheless";
    EXPECT_EQ(now(), 850ms);
}

TEST_F(GyroObjectTest, TheClockStopsWhereACallbackHasWaitedForIt) {
    control("fault add gyro_t::get_status delay 50");
    std::vector<sim::Time> times;
    gyro_delegate_t const delegate(*gyro_, 37, [&](unsigned char, cb_struct_te, void*) {
        unsigned char status = 9;
        times.push_back(now());
        gyro_->get_status(status);
        times.push_back(now());
    });
    activate(37, 12.5);
    step(161ms);
    EXPECT_EQ(times, (std::vector<sim::Time>{81ms, 131ms, 161ms, 211ms}));
    EXPECT_EQ(now(), 211ms) << "a step is done when the callbacks are";
}

TEST_F(GyroObjectTest, AnObjectWithoutItsNodeGetsNothing) {
    gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
    activate(37, 12.5);
    control("node remove /dev/i2c-2");
    step(1s);
    EXPECT_EQ(samples_, 0);
    control("node restore /dev/i2c-2");
    step(100ms);
    EXPECT_EQ(samples_, 1);
}

TEST_F(GyroObjectTest, AnObjectThatWasNotOpenedGetsNothing) {
    control("fault add gyro_t::gyro_t status -1");
    auto const unopened = make_gyro();
    gyro_delegate_t const delegate(*unopened, 37, counter(samples_));
    activate(37, 12.5);
    step(1s);
    EXPECT_EQ(samples_, 0);
}

TEST_F(GyroObjectTest, WhoListensWithoutHavingBeenOpenedGetsNothing) {
    control("fault add gyro_delegate_t::gyro_delegate_t status -1");
    control("fault add gyro_alarm_t::gyro_alarm_t status -1");
    gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
    gyro_alarm_t alarm(*gyro_, 37);
    alarm.on_position_left = [this] { ++samples_; };
    control("tilt 0 90 0");
    gyro_->irq_callback_hold(false);
    activate(37, 12.5);
    step(1s);
    EXPECT_EQ(samples_, 0);
}

TEST_F(GyroObjectTest, TwoObjectsAreHeldByThemselves) {
    auto const other = make_gyro();
    int others = 0;
    gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
    gyro_delegate_t const through_other(*other, 37, counter(others));
    activate(37, 12.5);
    gyro_->irq_callback_hold(true);
    step(801ms);
    EXPECT_EQ(samples_, 0);
    EXPECT_EQ(others, 10);
}

TEST_F(GyroObjectTest, NoneIsLostAndNoneDoubledInAMinuteOf400) {
    std::vector<sim::Time> taken;
    gyro_delegate_t const delegate(*gyro_, 37, counter(samples_));
    device_.access()->journal.follow([&](std::uint64_t, sim::Record const& record) {
        if (record.kind == sim::RecordKind::callback) {
            taken.push_back(record.start);
        }
    });
    activate(37, 400);
    step(60s + 1ms);
    EXPECT_EQ(samples_, 24000);
    ASSERT_EQ(taken.size(), 24000U);
    for (std::size_t i = 0; i < taken.size(); ++i) {
        ASSERT_EQ(taken[i], 2500us * static_cast<long>(i + 1) + 1ms);
    }
}

}  // namespace
