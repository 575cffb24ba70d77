// Triggers, frames and missed triggers in time, and the unit's refusals.
#include "sim/models/real_time_unit.h"

#include <gtest/gtest.h>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using namespace std::chrono_literals;
using sim::ImageSensor;
using sim::RealTimeUnit;
using sim::Time;

class RealTimeUnitTest : public testing::Test {
protected:
    void run_until(Time now) { unit_.advance(now, &sensor_); }

    std::pair<long, unsigned long> missed() const {
        long missed = -1;
        unsigned long frame_id = 0;
        EXPECT_EQ(unit_.get_missed_triggers(frame_id, missed), 0);
        return {missed, frame_id};
    }

    void start(unsigned int fps) {
        ASSERT_EQ(unit_.set_continuous(true), 0);
        ASSERT_EQ(unit_.set_rate(fps), 0);
    }

    // Makes pin 2 a trigger input.
    void connect_trigger_pin() {
        hal::dio_pin_config_t config;
        config.func = hal::dio_pin_config_t::pin_func::trigger_input;
        ASSERT_EQ(unit_.set_pin_config(2, config), 0);
    }

    RealTimeUnit unit_;
    ImageSensor sensor_{sim::imx296_facts()};
};

TEST_F(RealTimeUnitTest, ContinuousTriggerTakesRateTimesSecondsFrames) {
    run_until(Time(0));
    start(10);
    run_until(Time(3s));
    EXPECT_EQ(sensor_.frames(), 30U);
    EXPECT_EQ(missed(), std::make_pair(0L, 0UL));
}

TEST_F(RealTimeUnitTest, UnevenRateDoesNotDrift) {
    run_until(Time(123456us));
    start(60);
    run_until(Time(123456us + 100s));
    EXPECT_EQ(sensor_.frames(), 6000U);
    EXPECT_EQ(missed().first, 0);
}

TEST_F(RealTimeUnitTest, StoppedTriggerTakesNoFrames) {
    run_until(Time(0));
    start(10);
    run_until(Time(1s));
    ASSERT_EQ(unit_.set_continuous(false), 0);
    run_until(Time(9s));
    EXPECT_EQ(sensor_.frames(), 10U);
    ASSERT_EQ(unit_.set_continuous(true), 0);
    run_until(Time(9s + 99ms));
    EXPECT_EQ(sensor_.frames(), 10U);
    run_until(Time(9s + 100ms));
    EXPECT_EQ(sensor_.frames(), 11U);
}

TEST_F(RealTimeUnitTest, ProhibitedTimeMissesTriggersAndTellsTheFrame) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_prohibited_time(150'000), 0);
    start(10);
    run_until(Time(3s));
    EXPECT_EQ(sensor_.frames(), 15U);
    EXPECT_EQ(missed(), std::make_pair(15L, 15UL));
    ASSERT_EQ(unit_.reset_missed_triggers(), 0);
    EXPECT_EQ(missed(), std::make_pair(0L, 0UL));
}

TEST_F(RealTimeUnitTest, TriggerAtTheEndOfTheProhibitedTimeIsAccepted) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_prohibited_time(100'000), 0);
    start(10);
    run_until(Time(1s));
    EXPECT_EQ(missed().first, 0);
}

TEST_F(RealTimeUnitTest, ExposureLongerThanThePeriodMissesTriggers) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_exposure(250'000), 0);
    start(10);
    run_until(Time(3s));
    EXPECT_EQ(sensor_.frames(), 10U);
    EXPECT_EQ(missed(), std::make_pair(20L, 10UL));
}

TEST_F(RealTimeUnitTest, TriggersFasterThanTheSensorAreMissed) {
    run_until(Time(0));
    start(120);
    run_until(Time(1s));
    EXPECT_EQ(sensor_.frames(), 60U);
    EXPECT_EQ(missed().first, 60);
}

TEST_F(RealTimeUnitTest, Imx567TakesNinetySixFramesASecond) {
    ImageSensor sensor{sim::imx567_facts()};
    unit_.advance(Time(0), &sensor);
    start(96);
    unit_.advance(Time(10s), &sensor);
    EXPECT_EQ(sensor.frames(), 960U);
    EXPECT_EQ(missed().first, 0);
    start(192);
    unit_.advance(Time(11s), &sensor);
    EXPECT_EQ(sensor.frames(), 1056U);
    EXPECT_EQ(missed().first, 96);
}

TEST_F(RealTimeUnitTest, SingleShotsTakeOneFrameEach) {
    for (Time now : {Time(0), Time(1s), Time(2s)}) {
        run_until(now);
        ASSERT_EQ(unit_.single_shot(true), 0);
    }
    ASSERT_EQ(unit_.single_shot(true), 0);  // too early
    ASSERT_EQ(unit_.single_shot(false), 0);
    EXPECT_EQ(sensor_.frames(), 3U);
    EXPECT_EQ(missed(), std::make_pair(1L, 3UL));
}

TEST_F(RealTimeUnitTest, WithoutASensorTriggersDoNothing) {
    unit_.advance(Time(0), nullptr);
    start(10);
    unit_.advance(Time(1s), nullptr);
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed().first, 0);
}

TEST_F(RealTimeUnitTest, TriggersFromOutsideComeAtTheirRate) {
    run_until(Time(0));
    unit_.trigger_from_outside(5, 10U);
    EXPECT_EQ(sensor_.frames(), 1U);
    run_until(Time(250ms));
    EXPECT_EQ(sensor_.frames(), 3U);
    run_until(Time(10s));
    EXPECT_EQ(sensor_.frames(), 5U);
    EXPECT_EQ(missed().first, 0);
}

TEST_F(RealTimeUnitTest, TriggersFromOutsideAtOnceAreMissedButForTheFirst) {
    run_until(Time(0));
    unit_.trigger_from_outside(5, std::nullopt);
    EXPECT_EQ(sensor_.frames(), 1U);
    EXPECT_EQ(missed(), std::make_pair(4L, 1UL));
}

TEST_F(RealTimeUnitTest, TriggerInputTakesAFrame) {
    run_until(Time(0));
    connect_trigger_pin();
    unit_.drive_pin(2, true);
    unit_.drive_pin(2, false);
    EXPECT_EQ(sensor_.frames(), 1U);
    unit_.set_supply(sim::Supply::poe);
    run_until(Time(1s));
    unit_.drive_pin(2, true);
    EXPECT_EQ(sensor_.frames(), 1U) << "the pins have no power";
}

TEST_F(RealTimeUnitTest, IlluminationOutputIsOnWhileTheSensorExposes) {
    hal::dio_pin_config_t config;
    config.func = hal::dio_pin_config_t::pin_func::illumination_output;
    ASSERT_EQ(unit_.set_pin_config(1, config), 0);
    ASSERT_EQ(unit_.set_exposure_offset(1000), 0);
    ASSERT_EQ(unit_.set_exposure(5000), 0);
    run_until(Time(0));
    ASSERT_EQ(unit_.single_shot(true), 0);
    auto const lit_at = [this](Time now) {
        run_until(now);
        bool lit = false;
        EXPECT_EQ(unit_.get_pin_value(1, lit), 0);
        return lit;
    };
    EXPECT_FALSE(lit_at(Time(999)));
    EXPECT_TRUE(lit_at(Time(1000)));
    EXPECT_TRUE(lit_at(Time(5999)));
    EXPECT_FALSE(lit_at(Time(6000)));
}

TEST_F(RealTimeUnitTest, OffsetOfAllTriggersMissesNone) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_exposure_offset(20'000), 0);
    ASSERT_EQ(unit_.set_exposure(20'000), 0);
    start(40);
    run_until(Time(1s));
    EXPECT_EQ(missed().first, 0);
}

TEST_F(RealTimeUnitTest, ExposureThatALowerOffsetMovesIntoTheLastOneIsMissed) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_exposure_offset(50'000), 0);
    ASSERT_EQ(unit_.set_exposure(30'000), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);  // exposes from 50 to 80 ms
    ASSERT_EQ(unit_.set_exposure_offset(0), 0);
    run_until(Time(79'999us));
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed(), std::make_pair(1L, 1UL));
    EXPECT_TRUE(unit_.exposing());
    run_until(Time(80ms));
    EXPECT_FALSE(unit_.exposing());
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(sensor_.frames(), 2U);
    run_until(Time(80ms));
    EXPECT_TRUE(unit_.exposing());
    run_until(Time(110ms));
    EXPECT_FALSE(unit_.exposing());
}

TEST_F(RealTimeUnitTest, RateIsLimitedByTheImager) {
    struct {
        int imager;
        unsigned int fastest;
    } const limits[] = {{0, 1000}, {1, 60}, {2, 96}};
    for (auto const& limit : limits) {
        SCOPED_TRACE(limit.imager);
        ASSERT_EQ(unit_.set_imager_type(static_cast<hal::imx_te>(limit.imager)), 0);
        EXPECT_EQ(unit_.set_rate(limit.fastest), 0);
        EXPECT_EQ(unit_.set_rate(limit.fastest + 1), -1);
        EXPECT_EQ(unit_.set_rate(0), -1);
        EXPECT_EQ(unit_.rate(), limit.fastest);
    }
}

TEST_F(RealTimeUnitTest, ExposureIsLimitedByTheImager) {
    struct {
        int imager;
        unsigned int shortest;
        unsigned int longest;
    } const limits[] = {{0, 1, 100'000'000}, {1, 30, 15'500'000}, {2, 1, 100'000'000}};
    for (auto const& limit : limits) {
        SCOPED_TRACE(limit.imager);
        ASSERT_EQ(unit_.set_imager_type(static_cast<hal::imx_te>(limit.imager)), 0);
        EXPECT_EQ(unit_.set_exposure(limit.shortest), 0);
        EXPECT_EQ(unit_.set_exposure(limit.longest), 0);
        EXPECT_EQ(unit_.set_exposure(limit.shortest - 1), -1);
        EXPECT_EQ(unit_.set_exposure(limit.longest + 1), -1);
        unsigned int exposure = 0;
        EXPECT_EQ(unit_.get_exposure(exposure), 0);
        EXPECT_EQ(exposure, limit.longest);
    }
}

TEST_F(RealTimeUnitTest, UnknownImagerIsRefused) {
    ASSERT_EQ(unit_.set_imager_type(hal::imx_te::imx567), 0);
    EXPECT_EQ(unit_.set_imager_type(static_cast<hal::imx_te>(3)), -1);
    EXPECT_EQ(unit_.set_imager_type(static_cast<hal::imx_te>(-1)), -1);
    hal::imx_te type{};
    EXPECT_EQ(unit_.get_imager_type(type), 0);
    EXPECT_EQ(type, hal::imx_te::imx567);
}

TEST_F(RealTimeUnitTest, LightBarTakesPercentAndColour) {
    EXPECT_EQ(unit_.set_light_bar({100, 255, 0, 0}), 0);
    EXPECT_EQ(unit_.set_light_bar({101, 0, 0, 0}), -1);
    sim::Properties properties;
    sim::describe(properties, unit_);
    EXPECT_EQ(std::get<long long>(properties.all().at("rtu.lightbar.brightness").get()), 100);
    EXPECT_EQ(std::get<long long>(properties.all().at("rtu.lightbar.red").get()), 255);
}

TEST_F(RealTimeUnitTest, PinsHavePowerFromTheSupplyOnly) {
    bool available = false;
    EXPECT_EQ(unit_.dio_available(available), 0);
    EXPECT_TRUE(available);
    unit_.set_supply(sim::Supply::poe);
    EXPECT_EQ(unit_.dio_available(available), 0);
    EXPECT_FALSE(available);
    unit_.set_supply(sim::Supply::dc_24v);
    EXPECT_EQ(unit_.dio_available(available), 0);
    EXPECT_TRUE(available);
}

TEST_F(RealTimeUnitTest, SettingsAreProperties) {
    sim::Properties properties;
    sim::describe(properties, unit_);
    EXPECT_EQ(sim::set_property(properties, "rtu.imager_type", "1"), "");
    EXPECT_EQ(sim::set_property(properties, "rtu.exposure.time", "30"), "");
    EXPECT_NE(sim::set_property(properties, "rtu.exposure.time", "29"), "");
    EXPECT_EQ(sim::set_property(properties, "rtu.trigger.rate", "60"), "");
    EXPECT_NE(sim::set_property(properties, "rtu.trigger.rate", "61"), "");
    EXPECT_EQ(sim::set_property(properties, "rtu.prohibited_time", "7"), "");
    EXPECT_EQ(sim::set_property(properties, "rtu.trigger.continuous", "true"), "");
    run_until(Time(1s));
    EXPECT_EQ(sensor_.frames(), 60U);
}

TEST_F(RealTimeUnitTest, FramesAreAcquiredOnlyWhileTheCameraTakesThemOver) {
    sim::Properties properties;
    sim::describe(properties, unit_);
    auto const acquired = [&] { return std::get<long long>(properties.all().at("camera.acquired").get()); };
    run_until(Time(0));
    start(10);
    run_until(Time(1s));
    ASSERT_EQ(unit_.set_acquiring(true), 0);
    run_until(Time(2s));
    ASSERT_EQ(unit_.set_acquiring(false), 0);
    run_until(Time(3s));
    EXPECT_EQ(acquired(), 10);
    EXPECT_EQ(sensor_.frames(), 30U);
}

}  // namespace
