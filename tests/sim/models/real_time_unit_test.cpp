// Triggers, frames and missed triggers in time, and the unit's refusals.
#include "sim/models/real_time_unit.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

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

    // Makes pin 2 a trigger input that is active while its wire is high.
    void connect_trigger_pin() {
        hal::dio_pin_config_t config;
        config.type = hal::dio_pin_config_t::pin_type::pnp;
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

TEST_F(RealTimeUnitTest, SettingsBeforeAnyoneTouchesThem) {
    EXPECT_EQ(unit_.exposure(), 10'000U);
    EXPECT_EQ(unit_.rate(), 10U);
    EXPECT_EQ(unit_.prohibited_time(), 0U);
    EXPECT_EQ(unit_.exposure_offset(), 0U);
    EXPECT_FALSE(unit_.continuous());
    EXPECT_EQ(unit_.acquired(), 0U);
    hal::color_t const light_bar = unit_.light_bar();
    EXPECT_EQ(light_bar.brightness + light_bar.red + light_bar.green + light_bar.blue, 0);
}

TEST_F(RealTimeUnitTest, TimesAreReadBackAsTheyWereSet) {
    ASSERT_EQ(unit_.set_prohibited_time(123), 0);
    ASSERT_EQ(unit_.set_exposure_offset(456), 0);
    unsigned int prohibited = 0;
    unsigned int offset = 0;
    EXPECT_EQ(unit_.get_prohibited_time(prohibited), 0);
    EXPECT_EQ(unit_.get_exposure_offset(offset), 0);
    EXPECT_EQ(prohibited, 123U);
    EXPECT_EQ(offset, 456U);
}

TEST_F(RealTimeUnitTest, AllPinsAreReadAtOnce) {
    ASSERT_EQ(unit_.set_pin_value(4, true), 0);
    std::bitset<sim::DigitalIo::kPins> values;
    EXPECT_EQ(unit_.get_pin_values(values), 0);
    EXPECT_EQ(values.to_string(), "010000");
}

// Event by event this would not end.
TEST_F(RealTimeUnitTest, ThirtyYearsOfTriggersAreCountedToTheLast) {
    constexpr int kDays = 30 * 365;
    ASSERT_EQ(unit_.set_exposure(1000), 0);
    run_until(Time(0));
    start(1000);
    run_until(Time(24h * kDays));
    EXPECT_EQ(unit_.triggers(), 86'400'000UL * kDays);
    EXPECT_EQ(sensor_.frames(), (86'400'000UL * kDays - 1) / 17 + 1) << "each seventeenth, from the first on";
    EXPECT_EQ(missed().first, static_cast<long>(unit_.triggers() - sensor_.frames()));
}

TEST_F(RealTimeUnitTest, WithoutASensorAThousandDaysAreCountedToTheLast) {
    // At each trigger one exposure lasts and the next one waits.
    ASSERT_EQ(unit_.set_exposure(900), 0);
    ASSERT_EQ(unit_.set_exposure_offset(200), 0);
    unit_.advance(Time(0), nullptr);
    start(1000);
    unit_.advance(Time(24h * 1000), nullptr);
    EXPECT_EQ(unit_.triggers(), 86'400'000'000UL);
    EXPECT_EQ(missed().first, 0);
}

TEST_F(RealTimeUnitTest, ExposureThatWaitsBehindAThousandDaysBeginsInItsTime) {
    ASSERT_EQ(unit_.set_exposure_offset(60'000), 0);
    run_until(Time(0));
    start(10);
    Time const last_trigger(24h * 1000);
    run_until(last_trigger + 59ms);
    EXPECT_FALSE(unit_.exposing());
    run_until(last_trigger + 60ms);
    EXPECT_TRUE(unit_.exposing());
    EXPECT_EQ(sensor_.frames(), 864'000'000UL);
    run_until(last_trigger + 70ms);
    EXPECT_FALSE(unit_.exposing());
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

TEST_F(RealTimeUnitTest, MissedTriggersAreCountedWhenTheyCome) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_prohibited_time(150'000), 0);
    start(10);
    run_until(Time(200ms - 1us));
    EXPECT_EQ(unit_.triggers(), 1U);
    EXPECT_EQ(missed(), std::make_pair(0L, 0UL));
    run_until(Time(200ms));
    EXPECT_EQ(missed(), std::make_pair(1L, 1UL));
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

TEST_F(RealTimeUnitTest, WithoutASensorTheUnitTimesItsExposures) {
    unit_.advance(Time(0), nullptr);
    start(10);
    unit_.advance(Time(100ms), nullptr);
    EXPECT_TRUE(unit_.exposing());
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed(), std::make_pair(1L, 0UL));
    unit_.advance(Time(110ms - 1us), nullptr);
    EXPECT_TRUE(unit_.exposing());
    unit_.advance(Time(110ms), nullptr);
    EXPECT_FALSE(unit_.exposing());
    EXPECT_EQ(unit_.triggers(), 2U);
}

TEST_F(RealTimeUnitTest, WithoutASensorTheVeryFirstMomentCanExpose) {
    unit_.advance(Time(0), nullptr);
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_TRUE(unit_.exposing());
    EXPECT_EQ(missed().first, 0);
}

TEST_F(RealTimeUnitTest, WithoutASensorAThousandTriggersASecondAreAccepted) {
    unit_.advance(Time(0), nullptr);
    ASSERT_EQ(unit_.set_exposure(1), 0);
    start(1000);
    unit_.advance(Time(1s), nullptr);
    EXPECT_EQ(missed().first, 0);
    unit_.advance(Time(1s + 999us), nullptr);
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed().first, 1);
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

TEST_F(RealTimeUnitTest, TwoTriggersFromOutsideComeAtTheirRateToo) {
    run_until(Time(0));
    unit_.trigger_from_outside(2, 10U);
    run_until(Time(100ms - 1us));
    EXPECT_EQ(sensor_.frames(), 1U);
    run_until(Time(1s));
    EXPECT_EQ(sensor_.frames(), 2U);
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

TEST_F(RealTimeUnitTest, ChangedOffsetCountsForLaterTriggers) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_exposure_offset(4'000'000'000), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    ASSERT_EQ(unit_.set_exposure_offset(0), 0);
    start(10);
    run_until(Time(3s));
    EXPECT_EQ(sensor_.frames(), 31U);
    EXPECT_EQ(missed().first, 0);
    ASSERT_EQ(unit_.set_continuous(false), 0);
    run_until(Time(4000s - 1us));
    EXPECT_FALSE(unit_.exposing());
    run_until(Time(4000s));
    EXPECT_TRUE(unit_.exposing());
}

TEST_F(RealTimeUnitTest, OneExposureWaitsAtMost) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_exposure_offset(50'000), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    run_until(Time(40ms));
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed(), std::make_pair(1L, 1UL));
    run_until(Time(50ms));
    EXPECT_TRUE(unit_.exposing());
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed().first, 1) << "the first one waits no longer";
    run_until(Time(100ms - 1us));
    EXPECT_FALSE(unit_.exposing());
    run_until(Time(100ms));
    EXPECT_TRUE(unit_.exposing());
}

TEST_F(RealTimeUnitTest, ExposureThatReachesIntoTheWaitingOneIsMissed) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_exposure_offset(200'000), 0);
    ASSERT_EQ(unit_.set_exposure(50'000), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    ASSERT_EQ(unit_.set_exposure_offset(0), 0);
    run_until(Time(100ms));
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed().first, 0);
    run_until(Time(150ms + 1us));
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed().first, 1);
    EXPECT_FALSE(unit_.exposing());
}

TEST_F(RealTimeUnitTest, ExposureThatEndsAsTheWaitingOneBeginsIsAccepted) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_exposure_offset(200'000), 0);
    ASSERT_EQ(unit_.set_exposure(50'000), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    ASSERT_EQ(unit_.set_exposure_offset(0), 0);
    run_until(Time(150ms));
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(missed().first, 0);
    run_until(Time(250ms - 1us));
    EXPECT_TRUE(unit_.exposing());
    run_until(Time(250ms));
    EXPECT_FALSE(unit_.exposing());
}

TEST_F(RealTimeUnitTest, TriggerAsTheWaitingExposureBeginsIsMissed) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_exposure_offset(100'000), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    ASSERT_EQ(unit_.set_exposure_offset(0), 0);
    start(10);
    run_until(Time(100ms));
    EXPECT_EQ(missed().first, 1);
}

TEST_F(RealTimeUnitTest, RepeatingTheContinuousModeIsHarmless) {
    run_until(Time(0));
    start(10);
    run_until(Time(1050ms));
    ASSERT_EQ(unit_.set_continuous(true), 0);
    run_until(Time(1100ms));
    EXPECT_EQ(sensor_.frames(), 11U);
}

TEST_F(RealTimeUnitTest, DelayedTriggerInputTriggersAfterItsDelay) {
    run_until(Time(0));
    hal::dio_pin_config_t config;
    config.type = hal::dio_pin_config_t::pin_type::pnp;
    config.func = hal::dio_pin_config_t::pin_func::trigger_input;
    config.on_delay_active = true;
    config.on_delay_time = 5;
    ASSERT_EQ(unit_.set_pin_config(2, config), 0);
    unit_.drive_pin(2, true);
    run_until(Time(5ms - 1us));
    EXPECT_EQ(sensor_.frames(), 0U);
    run_until(Time(5ms));
    EXPECT_EQ(sensor_.frames(), 1U);
}

TEST_F(RealTimeUnitTest, ExchangeOfTheSensorEndsItsExposure) {
    hal::dio_pin_config_t config;
    config.func = hal::dio_pin_config_t::pin_func::illumination_output;
    ASSERT_EQ(unit_.set_pin_config(1, config), 0);
    ASSERT_EQ(unit_.set_exposure(1'000'000), 0);
    run_until(Time(0));
    ASSERT_EQ(unit_.single_shot(true), 0);
    ImageSensor other{sim::imx567_facts()};
    unit_.advance(Time(1ms), &other);
    EXPECT_FALSE(unit_.exposing());
    EXPECT_TRUE(unit_.pins().values().none());
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_TRUE(unit_.exposing());
    EXPECT_EQ(other.frames(), 1U);
    unit_.advance(Time(2ms), nullptr);
    EXPECT_FALSE(unit_.exposing()) << "it has gone";
}

TEST_F(RealTimeUnitTest, ExchangeOfTheSensorEndsWhatWaits) {
    ASSERT_EQ(unit_.set_exposure_offset(100'000), 0);
    run_until(Time(0));
    ASSERT_EQ(unit_.single_shot(true), 0);
    unit_.advance(Time(1ms), nullptr);
    unit_.advance(Time(100ms), nullptr);
    EXPECT_FALSE(unit_.exposing());
}

TEST_F(RealTimeUnitTest, SensorThatStaysKeepsItsExposure) {
    run_until(Time(0));
    ASSERT_EQ(unit_.single_shot(true), 0);
    run_until(Time(9ms));
    EXPECT_TRUE(unit_.exposing());
}

TEST_F(RealTimeUnitTest, ChangedImagerTypeAppliesItsLimits) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_continuous(true), 0);
    ASSERT_EQ(unit_.set_rate(1000), 0);
    ASSERT_EQ(unit_.set_exposure(100'000'000), 0);
    ASSERT_EQ(unit_.set_imager_type(hal::imx_te::imx296), 0);
    EXPECT_EQ(unit_.rate(), 60U);
    EXPECT_EQ(unit_.exposure(), 15'500'000U);
    run_until(Time(1s));
    EXPECT_EQ(unit_.triggers(), 60U);
    ASSERT_EQ(unit_.set_imager_type(hal::imx_te::imx567), 0);
    EXPECT_EQ(unit_.rate(), 60U);
    ASSERT_EQ(unit_.set_exposure(1), 0);
    ASSERT_EQ(unit_.set_imager_type(hal::imx_te::imx296), 0);
    EXPECT_EQ(unit_.exposure(), 30U);
}

TEST_F(RealTimeUnitTest, ImagerTypeThatAllowsTheRateKeepsTheTriggersGoing) {
    run_until(Time(0));
    start(60);
    run_until(Time(25ms));
    ASSERT_EQ(unit_.set_imager_type(hal::imx_te::imx296), 0);
    run_until(Time(33'334us));
    EXPECT_EQ(sensor_.frames(), 2U);
}

TEST_F(RealTimeUnitTest, WithoutPowerNothingTriggers) {
    run_until(Time(0));
    unit_.trigger_from_outside(20, 10U);
    unit_.lose_power();
    run_until(Time(1s));
    ASSERT_EQ(unit_.single_shot(true), 0);
    start(10);
    run_until(Time(1050ms));
    EXPECT_FALSE(unit_.exposing());
    EXPECT_EQ(unit_.triggers(), 0U);
    EXPECT_EQ(missed().first, 0);
    ASSERT_EQ(unit_.set_continuous(false), 0);
    EXPECT_EQ(sensor_.frames(), 1U);
    unit_.gain_power();
    run_until(Time(1500ms));
    EXPECT_EQ(unit_.triggers(), 5U) << "those from outside go on";
}

TEST_F(RealTimeUnitTest, RateIsLimitedByTheImager) {
    struct {
        int imager;
        unsigned int fastest;
    } const limits[] = {{0, 1000}, {1, 60}, {2, 96}};
    for (auto const& limit : limits) {
        SCOPED_TRACE(limit.imager);
        ASSERT_EQ(unit_.set_imager_type(static_cast<hal::imx_te>(limit.imager)), 0);
        EXPECT_EQ(unit_.set_rate(1), 0);
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
    ASSERT_EQ(unit_.set_acquiring(7, true), 0);
    run_until(Time(2s));
    ASSERT_EQ(unit_.set_acquiring(7, false), 0);
    run_until(Time(3s));
    EXPECT_EQ(acquired(), 10);
    EXPECT_EQ(sensor_.frames(), 30U);
}

TEST_F(RealTimeUnitTest, AcquisitionLastsWhileAnyCameraAcquires) {
    run_until(Time(0));
    ASSERT_EQ(unit_.set_acquiring(1, true), 0);
    ASSERT_EQ(unit_.set_acquiring(2, true), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(unit_.acquired(), 1U) << "one frame, whoever takes it";
    ASSERT_EQ(unit_.set_acquiring(1, false), 0);
    ASSERT_EQ(unit_.set_acquiring(1, false), 0);
    EXPECT_TRUE(unit_.acquiring());
    ASSERT_EQ(unit_.set_acquiring(2, false), 0);
    EXPECT_FALSE(unit_.acquiring());
    ASSERT_EQ(unit_.set_acquiring(2, true), 0);
    unit_.advance(Time(1s), nullptr);
    EXPECT_FALSE(unit_.acquiring()) << "its sensor has gone";
}

TEST_F(RealTimeUnitTest, WhatComesFromOutsideCanBeEnded) {
    run_until(Time(0));
    unit_.trigger_from_outside(100, 10U);
    run_until(Time(250ms));
    unit_.end_triggers_from_outside();
    run_until(Time(1s));
    EXPECT_EQ(unit_.triggers(), 3U);
}

TEST_F(RealTimeUnitTest, PropertiesOfAPinShowAndSetItsWholeRecord) {
    sim::Properties properties;
    sim::describe(properties, unit_);
    char const* const record[][2] = {{"type", "2"},
                                     {"func", "2"},
                                     {"contact", "1"},
                                     {"invert", "true"},
                                     {"on_delay.active", "true"},
                                     {"on_delay.time", "1"},
                                     {"off_delay.active", "true"},
                                     {"off_delay.time", "2"},
                                     {"pulse.active", "true"},
                                     {"pulse.time", "3"},
                                     {"line", "99"}};
    for (auto const& [field, value] : record) {
        std::string const name = std::string("dio.4.") + field;
        EXPECT_NE(sim::value_text(properties.all().at(name).get()), value);
        EXPECT_EQ(sim::set_property(properties, name, value), "");
        EXPECT_EQ(sim::value_text(properties.all().at(name).get()), value) << name;
    }
    hal::dio_pin_config_t config;
    ASSERT_EQ(unit_.get_pin_config(4, config), 0);
    EXPECT_EQ(config.type, hal::dio_pin_config_t::pin_type::push_pull);
    EXPECT_EQ(config.func, hal::dio_pin_config_t::pin_func::input);
    EXPECT_EQ(config.config, hal::dio_pin_config_t::pin_config::normally_closed);
    EXPECT_TRUE(config.invert && config.on_delay_active && config.off_delay_active && config.pulse_active);
    EXPECT_EQ(std::tie(config.on_delay_time, config.off_delay_time, config.pulse_time), std::make_tuple(1, 2, 3));
    EXPECT_EQ(config.pin_lines.at(4), 99);
    EXPECT_EQ(config.pin_lines.at(5), 20);
    EXPECT_EQ(sim::set_property(properties, "dio.4.func", "6"),
              "dio.4.func: 6 is not one of 0 output, 1 illumination_output, 2 input, 3 trigger_input, 4 encoder_a, "
              "5 encoder_b");
    EXPECT_EQ(sim::set_property(properties, "dio.4.command", "true"), "dio.4.command: the pin is no output");
    EXPECT_EQ(sim::set_property(properties, "dio.0.command", "true"), "");
    EXPECT_EQ(sim::value_text(properties.all().at("dio.0.value").get()), "true");
    config.pin_lines.clear();
    ASSERT_EQ(unit_.set_pin_config(4, config), 0);
    EXPECT_EQ(sim::value_text(properties.all().at("dio.4.line").get()), "-1");
}

TEST_F(RealTimeUnitTest, WithThePowerAllGoesButSupplyAndWires) {
    run_until(Time(5s));
    connect_trigger_pin();
    unit_.drive_pin(2, true);
    unit_.set_supply(sim::Supply::poe);
    ASSERT_EQ(unit_.set_imager_type(hal::imx_te::imx296), 0);
    unit_.lose_power();
    unit_.gain_power();
    EXPECT_EQ(unit_.imager_type(), hal::imx_te::none);
    EXPECT_EQ(unit_.supply(), sim::Supply::poe);
    EXPECT_EQ(unit_.pins().config(2).func, hal::dio_pin_config_t::pin_func::output);
    unit_.set_supply(sim::Supply::dc_24v);
    connect_trigger_pin();
    EXPECT_TRUE(unit_.pins().values().test(2)) << "its wire is high still";
    start(10);
    run_until(Time(5050ms));
    EXPECT_EQ(unit_.triggers(), 0U) << "the time goes on, too";
}

// What the light is told: each stretch by its end, its rate and its time.
class ExposureSignalTest : public RealTimeUnitTest {
protected:
    using Stretch = std::tuple<Time, double, unsigned int>;

    ExposureSignalTest() {
        unit_.follow_signal([this](Time until, sim::ExposureSignal const& signal) {
            stretches_.emplace_back(until, signal.rate, signal.time_us);
        });
        run_until(Time(0));
    }

    void expect_now(double rate, unsigned int time_us) {
        EXPECT_EQ(unit_.exposure_signal().rate, rate);
        EXPECT_EQ(unit_.exposure_signal().time_us, time_us);
    }

    std::vector<Stretch> stretches_;
};

TEST_F(ExposureSignalTest, ContinuousExposuresAreOneStretch) {
    start(10);
    expect_now(0, 0);
    run_until(Time(100ms));
    expect_now(10, 10'000);
    run_until(Time(3s));
    EXPECT_EQ(stretches_, (std::vector<Stretch>{{100ms, 0, 0}}));
    ASSERT_EQ(unit_.set_continuous(false), 0);
    run_until(Time(10s));
    EXPECT_EQ(stretches_, (std::vector<Stretch>{{100ms, 0, 0}, {3100ms, 10, 10'000}}));
    expect_now(0, 0);
}

TEST_F(ExposureSignalTest, UnevenRateIsOneStretchToo) {
    start(60);
    run_until(Time(10s));
    EXPECT_EQ(stretches_.size(), 1U);
    expect_now(60, 10'000);
}

TEST_F(ExposureSignalTest, MissedTriggersGiveNoLight) {
    ASSERT_EQ(unit_.set_prohibited_time(150'000), 0);
    start(10);
    run_until(Time(3s));
    EXPECT_EQ(stretches_.size(), 1U);
    expect_now(5, 10'000);
    ASSERT_EQ(unit_.set_prohibited_time(0), 0);
    ASSERT_EQ(unit_.set_exposure(250'000), 0);
    run_until(Time(6s));
    expect_now(10.0 / 3, 250'000);
    ASSERT_EQ(unit_.set_exposure(1000), 0);
    start(120);
    run_until(Time(7s));
    expect_now(60, 1000);
}

TEST_F(ExposureSignalTest, NextExposureIsTheFirstThatIsAccepted) {
    ASSERT_EQ(unit_.set_prohibited_time(100'000), 0);
    start(10);
    run_until(Time(1s));
    expect_now(10, 10'000);
    ASSERT_EQ(unit_.set_continuous(false), 0);
    run_until(Time(5s));
    ASSERT_EQ(unit_.set_prohibited_time(714'286), 0);
    start(7);  // at 142857, ..., 857142 us, which is 1 us too early, and at 1 s
    run_until(Time(5s + 142'857us));
    EXPECT_EQ(unit_.exposure_signal().rate, 7.0 / 6);
}

TEST_F(ExposureSignalTest, SingleShotIsSpreadUntilTheNextOneCouldCome) {
    ASSERT_EQ(unit_.set_exposure_offset(1000), 0);
    ASSERT_EQ(unit_.set_exposure(5000), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    expect_now(0, 0);
    run_until(Time(1s));
    EXPECT_EQ(stretches_, (std::vector<Stretch>{{1ms, 0, 0}, {17'666us, 1e6 / 16'666, 5000}}));
    ASSERT_EQ(unit_.set_exposure(500'000), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    run_until(Time(2s));
    EXPECT_EQ(stretches_.back(), (Stretch{1501ms, 2, 500'000}));
}

TEST_F(ExposureSignalTest, WithoutASensorAFlashHasItsPlace) {
    unit_.advance(Time(0), nullptr);
    ASSERT_EQ(unit_.set_exposure(500), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    unit_.advance(Time(1s), nullptr);
    EXPECT_EQ(stretches_, (std::vector<Stretch>{{0ms, 0, 0}, {10ms, 100, 500}}));
}

TEST_F(ExposureSignalTest, TriggersFromOutsideAreAStretchAndTheLastOneComesAlone) {
    unit_.trigger_from_outside(3, 10U);
    run_until(Time(1s));
    EXPECT_EQ(stretches_, (std::vector<Stretch>{{0ms, 0, 0}, {200ms, 10, 10'000}, {216'666us, 1e6 / 16'666, 10'000}}));
}

TEST_F(ExposureSignalTest, TriggerInputIsASignalToo) {
    connect_trigger_pin();
    unit_.drive_pin(2, true);
    expect_now(1e6 / 16'666, 10'000);
}

TEST_F(ExposureSignalTest, ChangeOfAPinLeavesTheSignalAsItIs) {
    hal::dio_pin_config_t config;
    config.func = hal::dio_pin_config_t::pin_func::illumination_output;
    config.on_delay_active = true;
    config.on_delay_time = 5;
    ASSERT_EQ(unit_.set_pin_config(1, config), 0);
    ASSERT_EQ(unit_.single_shot(true), 0);
    run_until(Time(5ms));
    EXPECT_TRUE(unit_.pins().values().test(1));
    expect_now(1e6 / 16'666, 10'000);
}

// At an uneven rate the prohibited time is over now before the fifth trigger, now after it.
TEST_F(ExposureSignalTest, LongTimeTellsEachStretch) {
    ASSERT_EQ(unit_.set_prohibited_time(714'286), 0);
    start(7);
    run_until(Time(100s));
    std::vector<Stretch> const in_one = stretches_;
    RealTimeUnit unit;
    stretches_.clear();
    unit.follow_signal([this](Time until, sim::ExposureSignal const& signal) {
        stretches_.emplace_back(until, signal.rate, signal.time_us);
    });
    ImageSensor sensor{sim::imx296_facts()};
    unit.advance(Time(0), &sensor);
    ASSERT_EQ(unit.set_prohibited_time(714'286), 0);
    ASSERT_EQ(unit.set_rate(7), 0);
    ASSERT_EQ(unit.set_continuous(true), 0);
    for (Time now(0); now < Time(100s); now += 50ms) {
        unit.advance(now, &sensor);
    }
    unit.advance(Time(100s), &sensor);
    EXPECT_GT(in_one.size(), 50U);
    EXPECT_EQ(in_one, stretches_);
}

TEST_F(ExposureSignalTest, EndsWithTheSensorAndWithThePower) {
    start(10);
    run_until(Time(1050ms));
    unit_.advance(Time(1060ms), nullptr);
    EXPECT_EQ(stretches_.back(), (Stretch{1050ms, 10, 10'000}));
    expect_now(0, 0);
    unit_.advance(Time(1150ms), nullptr);
    expect_now(10, 10'000);
    unit_.lose_power();
    EXPECT_EQ(stretches_.back(), (Stretch{1150ms, 10, 10'000}));
    unit_.advance(Time(2s), nullptr);
    expect_now(0, 0);
    unit_.gain_power();
    ASSERT_EQ(unit_.single_shot(true), 0);
    EXPECT_EQ(stretches_.back(), (Stretch{2s, 0, 0})) << "the light is told again";
}

// What can be seen of a unit and its sensor.
auto everything(RealTimeUnit const& unit, ImageSensor const& sensor) {
    return std::make_tuple(unit.triggers(), unit.missed_triggers(), unit.missed_frame(), unit.acquired(),
                           sensor.frames(), unit.exposing(), unit.exposure_signal().rate,
                           unit.pins().values().to_string());
}

struct Timing {
    unsigned int fps;
    unsigned int exposure_us;
    unsigned int offset_us;
    unsigned int prohibited_us;
};

class LongAdvanceTest : public testing::TestWithParam<Timing> {
protected:
    // Triggered by itself, and by the outside for a while, with an illumination output that is late.
    void start(RealTimeUnit& unit, ImageSensor* sensor) {
        unit.advance(Time(123us), sensor);
        hal::dio_pin_config_t output;
        output.func = hal::dio_pin_config_t::pin_func::illumination_output;
        output.on_delay_active = true;
        output.on_delay_time = 3;
        ASSERT_EQ(unit.set_pin_config(1, output), 0);
        ASSERT_EQ(unit.set_exposure(GetParam().exposure_us), 0);
        ASSERT_EQ(unit.set_exposure_offset(GetParam().offset_us), 0);
        ASSERT_EQ(unit.set_prohibited_time(GetParam().prohibited_us), 0);
        ASSERT_EQ(unit.set_acquiring(1, true), 0);
        ASSERT_EQ(unit.set_rate(GetParam().fps), 0);
        ASSERT_EQ(unit.set_continuous(true), 0);
        unit.trigger_from_outside(500, 333);
    }

    // Ends between two triggers, at one, and in an exposure, as it comes.
    void expect_same(ImageSensor* of_long, ImageSensor* of_short) {
        RealTimeUnit in_one;
        RealTimeUnit in_many;
        start(in_one, of_long);
        start(in_many, of_short);
        Time now = 123us;
        for (Time const end : {Time(1s), Time(1001ms), Time(4s + 567us), Time(9s + 10ms)}) {
            in_one.advance(end, of_long);
            for (; now < end; now += 97us) {
                in_many.advance(now, of_short);
            }
            in_many.advance(end, of_short);
            EXPECT_EQ(everything(in_one, long_sensor_), everything(in_many, short_sensor_)) << end.count();
        }
        EXPECT_GT(in_one.triggers(), 500U);
    }

    ImageSensor long_sensor_{sim::imx567_facts()};
    ImageSensor short_sensor_{sim::imx567_facts()};
};

TEST_P(LongAdvanceTest, IsTheSameAsManyShortOnes) {
    expect_same(&long_sensor_, &short_sensor_);
    EXPECT_GT(long_sensor_.frames(), 0U);
}

TEST_P(LongAdvanceTest, IsTheSameAsManyShortOnesWithoutASensor) {
    expect_same(nullptr, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Timings, LongAdvanceTest,
                         testing::Values(Timing{1000, 1, 0, 0}, Timing{1000, 12'345, 700, 0},
                                         Timing{1000, 5'000, 0, 250'000}, Timing{96, 10'000, 33, 0},
                                         Timing{7, 600'000, 0, 0}, Timing{777, 4'000, 10'417, 20'001}));

}  // namespace
