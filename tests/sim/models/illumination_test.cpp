// Tests of the illumination module's model.
#include "sim/models/illumination.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cmath>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using sim::Illumination;
using std::chrono::seconds;

constexpr sim::ExposureSignal kNoSignal{0.0, 0};

// Full steady light.
void shine(Illumination& illumination) {
    illumination.set_brightness(Illumination::kBrightnessLimits.max);
}

TEST(IlluminationTest, StartsDarkProtectedAndCool) {
    Illumination const illumination;
    EXPECT_FALSE(illumination.lit());
    EXPECT_TRUE(illumination.write_protected());
    EXPECT_DOUBLE_EQ(illumination.internal_temperature(), 25.0);
    EXPECT_EQ(illumination.error_code(), hal::illu_error_code{});
}

TEST(IlluminationTest, StartsWithTheSettingsOfTheFactory) {
    Illumination const illumination;
    EXPECT_EQ(illumination.segments(), 15U);
    EXPECT_EQ(illumination.brightness(), 0U);
    for (auto const colour : {Illumination::red, Illumination::green, Illumination::blue}) {
        unsigned int percent = 7;
        EXPECT_EQ(illumination.get_colour(colour, percent), 0);
        EXPECT_EQ(percent, 0U);
    }
    EXPECT_EQ(illumination.dc_brightness_limit(), 14U);
    EXPECT_EQ(illumination.flash_brightness_limit(), 14U);
    EXPECT_EQ(illumination.ot_off_limit(), 85U);
    EXPECT_EQ(illumination.limit_ot_decrease(), 10U);
    hal::illu_guards const guards = illumination.guards();
    EXPECT_TRUE(guards.over_temperature && guards.dvs && guards.autocal && guards.pvd);
    EXPECT_FALSE(illumination.led(Illumination::red_led) || illumination.led(Illumination::alter_led));
    EXPECT_EQ(illumination.flash_time(), 0U);
    EXPECT_EQ(illumination.external_temperature(), 25.0);
    EXPECT_EQ(illumination.ambient_temperature(), 25.0);
    EXPECT_TRUE(illumination.module.rgbw && illumination.present());
    hal::spot_flags const flags = illumination.flags();
    EXPECT_FALSE(flags.low_power || flags.driver_error || flags.calibration_error || flags.dvsc || flags.bc ||
                 flags.general_error);
}

TEST(IlluminationTest, LimitsAreThoseOfTheModule) {
    EXPECT_EQ(Illumination::kFlashTimes.step, 1U) << "us";
    using Setting = Illumination::Setting;
    struct {
        Setting setting;
        unsigned int min;
        unsigned int max;
    } const cases[] = {{Setting::segments, 0, 15},    {Setting::brightness, 0, 14},     {Setting::red, 0, 100},
                       {Setting::green, 0, 100},      {Setting::blue, 0, 100},          {Setting::dc_limit, 0, 14},
                       {Setting::flash_limit, 0, 14}, {Setting::ot_off_limit, 40, 100}, {Setting::ot_decrease, 1, 30}};
    Illumination illumination;
    for (auto const& expected : cases) {
        sim::Limits const& limits = Illumination::limits_of(expected.setting);
        EXPECT_EQ(limits.min, expected.min);
        EXPECT_EQ(limits.max, expected.max);
        EXPECT_EQ(limits.step, 1U);
        EXPECT_EQ(illumination.put(expected.setting, expected.max), 0);
        EXPECT_EQ(illumination.setting(expected.setting), expected.max);
        EXPECT_EQ(illumination.put(expected.setting, expected.min), 0);
        EXPECT_EQ(illumination.setting(expected.setting), expected.min);
        EXPECT_EQ(illumination.put(expected.setting, expected.max + 1), -1);
        EXPECT_EQ(illumination.put(expected.setting, expected.min - 1), -1);
        EXPECT_EQ(illumination.setting(expected.setting), expected.min);
    }
    sim::Limits colour{};
    EXPECT_EQ(illumination.get_colour_limits(colour), 0);
    EXPECT_EQ(colour.max, 100U);
    for (unsigned int const time : {10U, 10000U}) {
        EXPECT_EQ(illumination.set_exposure_mode(hal::exposure_mode::flash, time), 0);
        EXPECT_EQ(illumination.flash_time(), time);
    }
    EXPECT_EQ(illumination.set_exposure_mode(hal::exposure_mode::flash, 9), -1);
    EXPECT_EQ(illumination.set_exposure_mode(hal::exposure_mode::flash, 10001), -1);
    EXPECT_EQ(illumination.flash_time(), 10000U);
    EXPECT_EQ(illumination.set_exposure_mode(hal::exposure_mode::switched, 77), 0);
    EXPECT_EQ(illumination.exposure_mode(), hal::exposure_mode::switched);
    EXPECT_EQ(illumination.flash_time(), 0U);
    EXPECT_EQ(illumination.set_exposure_mode(hal::exposure_mode::continuous, 77), 0);
    EXPECT_EQ(illumination.set_mode(hal::illumination_mode_te::inactive), 0);
    EXPECT_EQ(illumination.set_mode(hal::illumination_mode_te::active), 0);
    EXPECT_EQ(illumination.set_pattern(hal::light_pattern_te::strobe), 0);
    EXPECT_EQ(illumination.pattern(), hal::light_pattern_te::strobe);
    EXPECT_EQ(illumination.set_pattern(hal::light_pattern_te::continuous), 0);
}

TEST(IlluminationTest, TemperaturesHaveTheRangeOfIndustrialParts) {
    Illumination illumination;
    int (Illumination::*const setters[])(double) = {&Illumination::set_internal_temperature,
                                                    &Illumination::set_external_temperature,
                                                    &Illumination::set_ambient_temperature};
    double (Illumination::*const getters[])() const = {
        &Illumination::internal_temperature, &Illumination::external_temperature, &Illumination::ambient_temperature};
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        for (double const temperature : {-40.0, 125.0}) {
            EXPECT_EQ((illumination.*setters[i])(temperature), 0);
            EXPECT_EQ((illumination.*getters[i])(), temperature);
        }
        for (double const temperature : {-40.01, 125.01, std::nan("")}) {
            errno = 0;
            EXPECT_EQ((illumination.*setters[i])(temperature), -1);
            EXPECT_EQ(errno, EINVAL);
            EXPECT_EQ((illumination.*getters[i])(), 125.0);
        }
    }
}

TEST(IlluminationTest, OverTemperatureHoldsFromTheLimitDownToTheDecrease) {
    Illumination illumination;
    struct {
        double temperature;
        bool too_hot;
    } const course[] = {{84.999, false}, {85.0, true},    {84.999, true}, {75.001, true},
                        {75.0, false},   {84.999, false}, {85.001, true}, {74.999, false}};
    for (auto const& step : course) {
        EXPECT_EQ(illumination.set_internal_temperature(step.temperature), 0);
        EXPECT_EQ(illumination.flags().over_temperature != 0, step.too_hot) << step.temperature;
    }
}

TEST(IlluminationTest, TheWarmthGoesByTheSurroundings) {
    Illumination illumination;
    illumination.set_brightness(7);
    illumination.set_ambient_temperature(-10.0);
    illumination.advance(std::chrono::hours(10), kNoSignal);
    EXPECT_NEAR(illumination.internal_temperature(), 30.0, 0.001);
    EXPECT_NEAR(illumination.external_temperature(), 5.0, 0.001);
    illumination.set_ambient_temperature(60.0);
    illumination.advance(std::chrono::hours(10) + seconds(120), kNoSignal);  // one time constant, to 85 in much more
    EXPECT_NEAR(illumination.internal_temperature(), 100.0 - 70.0 * std::exp(-1.0), 1e-6);
}

TEST(IlluminationTest, LightThatLeadsJustToTheLimitIsNeverTooHot) {
    Illumination illumination;
    shine(illumination);
    illumination.set_segments(0b0111);  // to 85 degrees
    illumination.advance(std::chrono::hours(1), kNoSignal);
    EXPECT_NEAR(illumination.internal_temperature(), 85.0, 1e-6);
    EXPECT_TRUE(illumination.lit());
}

TEST(IlluminationTest, CoolingBelowTheLimitIsNotTooHot) {
    Illumination illumination;
    illumination.set_internal_temperature(84.0);
    illumination.advance(seconds(1), kNoSignal);
    EXPECT_FALSE(illumination.flags().over_temperature);
    EXPECT_NEAR(illumination.internal_temperature(), 25.0 + 59.0 * std::exp(-1.0 / 120.0), 1e-9);
}

TEST(IlluminationTest, ItIsTooHotOnTheMicrosecond) {
    Illumination illumination;
    shine(illumination);
    auto const limit = std::chrono::microseconds(std::llround(std::ceil(120.0 * std::log(4.0) * 1e6)));
    illumination.advance(limit - std::chrono::microseconds(1), kNoSignal);
    EXPECT_FALSE(illumination.flags().over_temperature);
    illumination.advance(limit, kNoSignal);
    EXPECT_TRUE(illumination.flags().over_temperature);
    EXPECT_EQ(illumination.internal_temperature(), 85.0);
}

TEST(IlluminationTest, WithoutASignalAFlashHeatsNothing) {
    Illumination illumination;
    shine(illumination);
    illumination.set_exposure_mode(hal::exposure_mode::flash, 10000);
    EXPECT_EQ(illumination.load(), 0.0);
    EXPECT_TRUE(illumination.lit());
}

TEST(IlluminationTest, TimeThatHasPassedAlreadyChangesNothing) {
    Illumination illumination;
    shine(illumination);
    illumination.advance(seconds(10), kNoSignal);
    double const warm = illumination.internal_temperature();
    illumination.advance(seconds(10), kNoSignal);
    illumination.advance(seconds(9), kNoSignal);
    EXPECT_EQ(illumination.internal_temperature(), warm);
    illumination.advance(seconds(120), kNoSignal);
    EXPECT_NEAR(illumination.internal_temperature(), 25.0 + 80.0 * (1.0 - std::exp(-1.0)), 1e-9);
}

TEST(IlluminationTest, WhiteAndColoursShareOneSupplyAndEachIsCapped) {
    struct {
        unsigned int white;
        unsigned int percent[3];
        unsigned int limit;
        double load;
    } const cases[] = {{7, {0, 0, 0}, 14, 0.5},       {7, {30, 0, 0}, 14, 0.6},      {7, {0, 60, 90}, 14, 1.0},
                       {0, {60, 60, 60}, 14, 0.6},    {0, {100, 100, 100}, 14, 1.0}, {14, {100, 100, 100}, 14, 1.0},
                       {14, {100, 100, 100}, 7, 1.0}, {14, {0, 0, 0}, 7, 0.5},       {0, {100, 100, 100}, 7, 0.5}};
    for (auto const& expected : cases) {
        Illumination illumination;
        illumination.set_brightness(expected.white);
        illumination.set_colour(Illumination::red, expected.percent[0]);
        illumination.set_colour(Illumination::green, expected.percent[1]);
        illumination.set_colour(Illumination::blue, expected.percent[2]);
        illumination.put(Illumination::Setting::dc_limit, expected.limit);
        EXPECT_DOUBLE_EQ(illumination.load(), expected.load);
        illumination.set_segments(0b0100);
        EXPECT_DOUBLE_EQ(illumination.load(), expected.load / 4.0);
    }
}

TEST(IlluminationTest, RefusedValueLeavesTheOldOne) {
    Illumination illumination;
    EXPECT_EQ(illumination.set_segments(5), 0);
    EXPECT_EQ(illumination.set_brightness(14), 0);
    EXPECT_EQ(illumination.set_colour(Illumination::red, 100), 0);
    errno = 0;
    EXPECT_EQ(illumination.set_segments(16), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(illumination.set_brightness(15), -1);
    EXPECT_EQ(illumination.set_colour(Illumination::red, 101), -1);
    EXPECT_EQ(illumination.set_mode(static_cast<hal::illumination_mode_te>(2)), -1);
    EXPECT_EQ(illumination.set_pattern(static_cast<hal::light_pattern_te>(1)), -1);
    EXPECT_EQ(illumination.set_exposure_mode(static_cast<hal::exposure_mode>(1), 0), -1);
    EXPECT_EQ(illumination.segments(), 5U);
    EXPECT_EQ(illumination.brightness(), 14U);
    unsigned int percent = 0;
    EXPECT_EQ(illumination.get_colour(Illumination::red, percent), 0);
    EXPECT_EQ(percent, 100U);
    EXPECT_EQ(illumination.mode(), hal::illumination_mode_te::active);
    EXPECT_EQ(illumination.pattern(), hal::light_pattern_te::continuous);
    EXPECT_EQ(illumination.exposure_mode(), hal::exposure_mode::continuous);
}

TEST(IlluminationTest, WriteProtectionRefusesLimitsAndGuardsUntilItIsOff) {
    Illumination illumination;
    errno = 0;
    EXPECT_EQ(illumination.set_dc_brightness_limit(3), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(illumination.set_flash_brightness_limit(4), -1);
    EXPECT_EQ(illumination.set_ot_off_limit(70), -1);
    EXPECT_EQ(illumination.set_limit_ot_decrease(5), -1);
    EXPECT_EQ(illumination.set_guards({}), -1);
    EXPECT_EQ(illumination.dc_brightness_limit(), 14U);
    EXPECT_EQ(illumination.ot_off_limit(), 85U);
    EXPECT_TRUE(illumination.guards().pvd);

    illumination.set_write_protection(false);
    EXPECT_EQ(illumination.set_dc_brightness_limit(3), 0);
    EXPECT_EQ(illumination.set_flash_brightness_limit(4), 0);
    EXPECT_EQ(illumination.set_ot_off_limit(70), 0);
    EXPECT_EQ(illumination.set_limit_ot_decrease(5), 0);
    EXPECT_EQ(illumination.set_guards({}), 0);
    EXPECT_EQ(illumination.dc_brightness_limit(), 3U);
    EXPECT_EQ(illumination.flash_brightness_limit(), 4U);
    EXPECT_EQ(illumination.ot_off_limit(), 70U);
    EXPECT_EQ(illumination.limit_ot_decrease(), 5U);
    EXPECT_FALSE(illumination.guards().pvd);
}

TEST(IlluminationTest, UnprotectedSettingsHaveLimitsToo) {
    Illumination illumination;
    illumination.set_write_protection(false);
    EXPECT_EQ(illumination.set_dc_brightness_limit(15), -1);
    EXPECT_EQ(illumination.set_flash_brightness_limit(15), -1);
    EXPECT_EQ(illumination.set_ot_off_limit(39), -1);
    EXPECT_EQ(illumination.set_ot_off_limit(101), -1);
    EXPECT_EQ(illumination.set_limit_ot_decrease(0), -1);
    EXPECT_EQ(illumination.set_limit_ot_decrease(31), -1);
}

TEST(IlluminationTest, WhiteModuleHasNoColours) {
    Illumination illumination;
    illumination.module.rgbw = false;
    unsigned int percent = 77;
    sim::Limits limits{1, 2, 3};
    errno = 0;
    EXPECT_EQ(illumination.set_colour(Illumination::blue, 5), -1);
    EXPECT_EQ(errno, ENOTSUP);
    EXPECT_EQ(illumination.get_colour(Illumination::blue, percent), -1);
    EXPECT_EQ(illumination.get_colour_limits(limits), -1);
    EXPECT_EQ(percent, 77U);
    EXPECT_EQ(limits.max, 2U);
}

TEST(IlluminationTest, LoadFollowsBrightnessSegmentsAndLimit) {
    Illumination illumination;
    shine(illumination);
    EXPECT_DOUBLE_EQ(illumination.load(), 1.0);
    illumination.set_segments(0b0011);
    EXPECT_DOUBLE_EQ(illumination.load(), 0.5);
    illumination.set_write_protection(false);
    illumination.set_dc_brightness_limit(7);
    EXPECT_DOUBLE_EQ(illumination.load(), 0.25);
    illumination.set_segments(0);
    EXPECT_DOUBLE_EQ(illumination.load(), 0.0);
}

TEST(IlluminationTest, ColoursHeatToo) {
    Illumination illumination;
    illumination.set_colour(Illumination::red, 100);
    illumination.set_colour(Illumination::green, 50);
    EXPECT_DOUBLE_EQ(illumination.load(), 0.5);
    shine(illumination);
    EXPECT_DOUBLE_EQ(illumination.load(), 1.0);
}

TEST(IlluminationTest, InactiveOrMissingModuleIsDark) {
    Illumination illumination;
    shine(illumination);
    illumination.set_mode(hal::illumination_mode_te::inactive);
    EXPECT_FALSE(illumination.lit());
    EXPECT_EQ(illumination.states().segments[0], 0);
    illumination.set_mode(hal::illumination_mode_te::active);
    EXPECT_TRUE(illumination.lit());
    illumination.set_present(false);
    EXPECT_FALSE(illumination.lit());
}

TEST(IlluminationTest, StrobeAndSwitchFollowTheExposureSignal) {
    Illumination illumination;
    shine(illumination);
    illumination.advance(sim::Time(0), {10.0, 20000});
    EXPECT_DOUBLE_EQ(illumination.load(), 1.0);
    illumination.set_exposure_mode(hal::exposure_mode::switched, 0);
    EXPECT_DOUBLE_EQ(illumination.load(), 0.2);
    illumination.set_exposure_mode(hal::exposure_mode::continuous, 0);
    illumination.set_pattern(hal::light_pattern_te::strobe);
    EXPECT_DOUBLE_EQ(illumination.load(), 0.2);
}

TEST(IlluminationTest, FlashHasItsOwnTimeModeAndRange) {
    struct {
        unsigned int time_us;
        std::uint32_t range;
        double load;  // at 10 Hz
    } const flashes[] = {
        {100, 0xC0, 0.003}, {200, 0xC0, 0.006}, {201, 0x80, 0.00402}, {1000, 0x80, 0.02}, {1001, 0x40, 0.01001}};
    for (auto const& flash : flashes) {
        SCOPED_TRACE(flash.time_us);
        Illumination illumination;
        shine(illumination);
        illumination.advance(sim::Time(0), {10.0, 0});
        EXPECT_EQ(illumination.set_exposure_mode(hal::exposure_mode::flash, flash.time_us), 0);
        EXPECT_EQ(illumination.states().operating_mode, 0x10U);
        EXPECT_EQ(illumination.states().light_range, flash.range);
        EXPECT_NEAR(illumination.load(), flash.load, 1e-9);
    }
    Illumination illumination;
    EXPECT_EQ(illumination.set_exposure_mode(hal::exposure_mode::flash, 9), -1);
    EXPECT_EQ(illumination.set_exposure_mode(hal::exposure_mode::flash, 10001), -1);
    EXPECT_EQ(illumination.states().operating_mode, 0x30U);
    EXPECT_EQ(illumination.states().light_range, 0x40U);
}

TEST(IlluminationTest, FlashLongerThanTheTriggersAreApartIsATriggerOverflow) {
    Illumination illumination;
    shine(illumination);
    illumination.set_exposure_mode(hal::exposure_mode::flash, 5000);
    illumination.advance(sim::Time(0), {200.0, 0});
    EXPECT_FALSE(illumination.flags().trigger_overflow);
    illumination.advance(sim::Time(0), {201.0, 0});
    EXPECT_TRUE(illumination.flags().trigger_overflow);
    EXPECT_TRUE(illumination.flags().general_error);
    EXPECT_EQ(static_cast<unsigned int>(illumination.error_code()), 2U);
}

TEST(IlluminationTest, SegmentsThatShineAreOn) {
    Illumination illumination;
    shine(illumination);
    illumination.set_segments(0b1001);
    hal::spot_states const states = illumination.states();
    EXPECT_EQ(states.segments[0], 1);
    EXPECT_EQ(states.segments[1], 0);
    EXPECT_EQ(states.segments[2], 0);
    EXPECT_EQ(states.segments[3], 1);
}

TEST(IlluminationTest, GravestFlagIsTheErrorCode) {
    Illumination illumination;
    illumination.disturbances.bc = true;
    EXPECT_EQ(static_cast<unsigned int>(illumination.error_code()), 6U);
    illumination.disturbances.dvsc = true;
    EXPECT_EQ(static_cast<unsigned int>(illumination.error_code()), 5U);
    illumination.disturbances.low_power = true;
    EXPECT_EQ(static_cast<unsigned int>(illumination.error_code()), 1U);
    illumination.disturbances.calibration_error = true;
    EXPECT_EQ(static_cast<unsigned int>(illumination.error_code()), 4U);
    illumination.set_internal_temperature(90.0);
    EXPECT_EQ(static_cast<unsigned int>(illumination.error_code()), 7U);
    illumination.disturbances.driver_error = true;
    EXPECT_EQ(static_cast<unsigned int>(illumination.error_code()), 3U);
}

TEST(IlluminationTest, TemperatureRisesWithTheLoadAndFallsWithoutIt) {
    Illumination illumination;
    illumination.set_brightness(7);
    illumination.advance(seconds(120), kNoSignal);  // one time constant
    EXPECT_NEAR(illumination.internal_temperature(), 25.0 + 40.0 * (1.0 - std::exp(-1.0)), 1e-6);
    EXPECT_NEAR(illumination.external_temperature(), 25.0 + 15.0 * (1.0 - std::exp(-0.2)), 1e-6);
    illumination.set_brightness(0);
    double const warm = illumination.internal_temperature();
    illumination.advance(seconds(240), kNoSignal);
    EXPECT_NEAR(illumination.internal_temperature(), 25.0 + (warm - 25.0) * std::exp(-1.0), 1e-6);
}

TEST(IlluminationTest, TemperatureOutsideThatIsSetGoesOnFromThere) {
    Illumination illumination;
    illumination.set_external_temperature(85.0);
    EXPECT_DOUBLE_EQ(illumination.external_temperature(), 85.0);
    illumination.advance(seconds(600), kNoSignal);  // one time constant
    EXPECT_NEAR(illumination.external_temperature(), 25.0 + 60.0 * std::exp(-1.0), 1e-6);
}

TEST(IlluminationTest, GuardSwitchesOffAtTheLimitAndBackAfterTheDecrease) {
    Illumination illumination;
    shine(illumination);
    double const to_limit = 120.0 * std::log(80.0 / 20.0);   // of the 80 K rise, 20 K are left at 85
    double const to_return = 120.0 * std::log(60.0 / 50.0);  // from 85 to 75, towards 25
    illumination.advance(seconds(static_cast<int>(to_limit)), kNoSignal);
    EXPECT_TRUE(illumination.lit());
    illumination.advance(seconds(static_cast<int>(to_limit) + 1), kNoSignal);
    EXPECT_FALSE(illumination.lit());
    EXPECT_TRUE(illumination.flags().over_temperature);
    illumination.advance(seconds(static_cast<int>(to_limit + to_return)), kNoSignal);
    EXPECT_FALSE(illumination.lit());
    illumination.advance(seconds(static_cast<int>(to_limit + to_return) + 1), kNoSignal);
    EXPECT_TRUE(illumination.lit());
    EXPECT_FALSE(illumination.flags().over_temperature);
}

TEST(IlluminationTest, ADayOfLightEndsAlikeHoweverOftenOneLooked) {
    Illumination once;
    shine(once);
    once.advance(std::chrono::hours(24), kNoSignal);
    for (auto const each : {seconds(86400 / 4), seconds(977), seconds(30)}) {
        SCOPED_TRACE(each.count());
        Illumination often;
        shine(often);
        for (sim::Time now = each; now < std::chrono::hours(24); now += each) {
            often.advance(now, kNoSignal);
        }
        often.advance(std::chrono::hours(24), kNoSignal);
        EXPECT_EQ(often.internal_temperature(), once.internal_temperature());
        EXPECT_EQ(often.external_temperature(), once.external_temperature());
        EXPECT_EQ(often.lit(), once.lit());
    }
}

// The same by small steps, as a second opinion.
TEST(IlluminationTest, TemperaturesAreThoseOfTheirTwoStages) {
    constexpr double kStep = 0.01;  // s
    double inside = 25.0;
    double outside = 25.0;
    bool off = false;
    Illumination illumination;
    shine(illumination);
    for (int second = 1; second <= 3600; ++second) {
        for (int i = 0; i < 100; ++i) {
            double const load = off ? 0.0 : 1.0;
            inside += (25.0 + 80.0 * load - inside) / 120.0 * kStep;
            outside += (25.0 + 30.0 * load - outside) / 600.0 * kStep;
            off = inside >= 85.0 || (off && inside > 75.0);
        }
        if (second % 300 == 0) {
            illumination.advance(seconds(second), kNoSignal);
            EXPECT_NEAR(illumination.internal_temperature(), inside, 0.5) << second;
            EXPECT_NEAR(illumination.external_temperature(), outside, 0.1) << second;
        }
    }
}

TEST(IlluminationTest, OneLongStepEndsWhereManyShortOnesDo) {
    Illumination one;
    Illumination many;
    shine(one);
    shine(many);
    for (int second = 1; second <= 1000; ++second) {
        many.advance(seconds(second), kNoSignal);
    }
    one.advance(seconds(1000), kNoSignal);
    EXPECT_EQ(one.internal_temperature(), many.internal_temperature());
    EXPECT_EQ(one.external_temperature(), many.external_temperature());
    EXPECT_EQ(one.lit(), many.lit());
}

TEST(IlluminationTest, AgesPassAtOnce) {
    Illumination illumination;
    shine(illumination);
    illumination.advance(seconds(1'000'000'000'000), kNoSignal);
    EXPECT_GE(illumination.internal_temperature(), 75.0 - 1e-6);
    EXPECT_LE(illumination.internal_temperature(), 85.0 + 1e-6);
}

TEST(IlluminationTest, WithoutTheGuardItIsReportedButNotSwitchedOff) {
    Illumination illumination;
    illumination.set_write_protection(false);
    illumination.set_guards({false, true, true, true});
    shine(illumination);
    illumination.advance(seconds(1200), kNoSignal);
    EXPECT_TRUE(illumination.flags().over_temperature);
    EXPECT_TRUE(illumination.lit());
    EXPECT_NEAR(illumination.internal_temperature(), 105.0, 0.1);
}

TEST(IlluminationTest, ANewLimitShowsAtOnceAndItsLightIsSwitchedOff) {
    Illumination illumination;
    shine(illumination);
    illumination.set_internal_temperature(70.0);
    illumination.set_write_protection(false);
    EXPECT_EQ(illumination.set_ot_off_limit(71), 0);
    EXPECT_FALSE(illumination.flags().over_temperature);
    EXPECT_EQ(illumination.set_ot_off_limit(70), 0);
    EXPECT_TRUE(illumination.flags().over_temperature);
    EXPECT_FALSE(illumination.lit());
    EXPECT_EQ(illumination.set_ot_off_limit(79), 0);
    EXPECT_FALSE(illumination.lit()) << "it has not fallen by the decrease";
    EXPECT_EQ(illumination.set_ot_off_limit(80), 0);
    EXPECT_TRUE(illumination.lit());
    EXPECT_EQ(illumination.set_ot_off_limit(70), 0);
    EXPECT_EQ(illumination.set_ot_off_limit(72), 0);
    EXPECT_EQ(illumination.set_limit_ot_decrease(2), 0);
    EXPECT_TRUE(illumination.lit());
}

TEST(IlluminationTest, OverTemperatureThatALimitCausedLastsUntilItHasCooled) {
    Illumination illumination;
    shine(illumination);
    illumination.advance(seconds(100), kNoSignal);  // to 70.2 degrees
    illumination.set_write_protection(false);
    illumination.set_ot_off_limit(65);
    illumination.set_ot_off_limit(75);
    EXPECT_TRUE(illumination.flags().over_temperature);
    illumination.advance(seconds(101), kNoSignal);
    EXPECT_TRUE(illumination.flags().over_temperature);
    illumination.advance(seconds(115), kNoSignal);  // to 65 degrees in 120 ln(45.2/40) = 14.7 s
    EXPECT_FALSE(illumination.flags().over_temperature);
}

TEST(IlluminationTest, LimitsAndTheKindOfTheModuleDecideWhetherItIsLit) {
    Illumination illumination;
    illumination.set_write_protection(false);
    shine(illumination);
    illumination.set_dc_brightness_limit(0);
    EXPECT_FALSE(illumination.lit());
    EXPECT_EQ(illumination.states().segments[0], 0);
    illumination.set_exposure_mode(hal::exposure_mode::flash, 100);
    EXPECT_TRUE(illumination.lit());
    EXPECT_EQ(illumination.states().segments[0], 1);
    illumination.set_flash_brightness_limit(0);
    EXPECT_FALSE(illumination.lit());

    Illumination coloured;
    coloured.set_colour(Illumination::blue, 1);
    EXPECT_TRUE(coloured.lit());
    EXPECT_EQ(coloured.states().segments[3], 1);
    coloured.module.rgbw = false;
    EXPECT_FALSE(coloured.lit());
    EXPECT_EQ(coloured.states().segments[3], 0);
}

TEST(IlluminationTest, DoubleAndTripleCurrentHeatAccordingly) {
    struct {
        unsigned int time_us;
        double rate;
        double times;
    } const flashes[] = {
        {1001, 999.0, 0.999999}, {1000, 1000.0, 2.0}, {1000, 2000.0, 2.0}, {200, 5000.0, 3.0}, {200, 500.0, 0.3}};
    for (auto const& flash : flashes) {
        SCOPED_TRACE(flash.time_us);
        Illumination illumination;
        illumination.set_write_protection(false);
        illumination.set_guards({});
        shine(illumination);
        illumination.set_exposure_mode(hal::exposure_mode::flash, flash.time_us);
        illumination.advance(std::chrono::hours(10), {flash.rate, 0});
        EXPECT_NEAR(illumination.internal_temperature(), 25.0 + 80.0 * flash.times, 0.001);
        EXPECT_NEAR(illumination.external_temperature(), 25.0 + 30.0 * flash.times, 0.001);
    }
}

TEST(IlluminationTest, UnpluggedItComesBackAsAfterPowerOn) {
    Illumination illumination;
    shine(illumination);
    illumination.disturbances.bc = true;
    illumination.advance(seconds(60), kNoSignal);
    illumination.set_write_protection(false);
    illumination.set_dc_brightness_limit(13);
    illumination.set_flash_brightness_limit(12);
    illumination.set_ot_off_limit(80);
    illumination.set_limit_ot_decrease(5);
    illumination.set_guards({true, false, true, false});
    illumination.set_segments(3);
    illumination.set_colour(Illumination::green, 4);
    illumination.set_led(Illumination::green_led, true);
    illumination.set_mode(hal::illumination_mode_te::inactive);
    illumination.set_pattern(hal::light_pattern_te::strobe);
    illumination.set_exposure_mode(hal::exposure_mode::flash, 100);
    illumination.set_present(true);
    EXPECT_EQ(illumination.segments(), 3U) << "it was there all the time";
    double const warm = illumination.internal_temperature();
    illumination.set_present(false);
    EXPECT_FALSE(illumination.present());
    EXPECT_EQ(illumination.internal_temperature(), warm);
    illumination.advance(seconds(180), kNoSignal);
    EXPECT_NEAR(illumination.internal_temperature(), 25.0 + (warm - 25.0) * std::exp(-1.0), 1e-9);
    illumination.put(Illumination::Setting::brightness, 9);  // nobody is there
    illumination.set_present(true);
    EXPECT_TRUE(illumination.present());
    EXPECT_EQ(illumination.brightness(), 0U);
    EXPECT_EQ(illumination.segments(), 15U);
    EXPECT_EQ(illumination.setting(Illumination::Setting::green), 0U);
    EXPECT_FALSE(illumination.led(Illumination::green_led));
    EXPECT_EQ(illumination.mode(), hal::illumination_mode_te::active);
    EXPECT_EQ(illumination.pattern(), hal::light_pattern_te::continuous);
    EXPECT_EQ(illumination.exposure_mode(), hal::exposure_mode::continuous);
    EXPECT_EQ(illumination.flash_time(), 0U);
    EXPECT_TRUE(illumination.write_protected());
    EXPECT_EQ(illumination.dc_brightness_limit(), 13U);
    EXPECT_EQ(illumination.flash_brightness_limit(), 12U);
    EXPECT_EQ(illumination.ot_off_limit(), 80U);
    EXPECT_EQ(illumination.limit_ot_decrease(), 5U);
    EXPECT_FALSE(illumination.guards().dvs);
    EXPECT_TRUE(illumination.guards().autocal);
    EXPECT_TRUE(illumination.disturbances.bc);
}

TEST(IlluminationTest, WithoutPowerModuleAndSurroundingsStayWhatTheyAre) {
    Illumination illumination;
    illumination.module.rgbw = false;
    illumination.advance(seconds(1), kNoSignal);
    EXPECT_EQ(illumination.set_ambient_temperature(40), 0);
    illumination.lose_power();
    EXPECT_FALSE(illumination.module.rgbw);
    EXPECT_EQ(illumination.ambient_temperature(), 40);
    illumination.advance(seconds(2), kNoSignal);
    EXPECT_GT(illumination.internal_temperature(), 25);
    EXPECT_LT(illumination.internal_temperature(), 26);
}

TEST(IlluminationTest, TemperatureThatIsSetLaterGoesOnFromThereToo) {
    Illumination illumination;
    illumination.advance(seconds(1), kNoSignal);
    EXPECT_EQ(illumination.set_external_temperature(50), 0);
    illumination.advance(seconds(2), kNoSignal);
    EXPECT_NEAR(illumination.external_temperature(), 50, 0.1);
    EXPECT_EQ(illumination.set_internal_temperature(60), 0);
    illumination.advance(seconds(3), kNoSignal);
    EXPECT_NEAR(illumination.internal_temperature(), 60, 0.5);
    EXPECT_NEAR(illumination.external_temperature(), 50, 0.2);
}

TEST(IlluminationTest, MissingModuleDoesNotAnswer) {
    Illumination illumination;
    EXPECT_EQ(illumination.answer(), 0);
    illumination.set_present(false);
    errno = 0;
    EXPECT_EQ(illumination.answer(), -1);
    EXPECT_EQ(errno, ENODEV);
}

TEST(IlluminationTest, AHandPassesTheWriteProtectionAndTheKindOfTheModule) {
    Illumination illumination;
    illumination.module.rgbw = false;
    ASSERT_TRUE(illumination.write_protected());
    sim::Properties properties;
    sim::describe(properties, illumination);
    struct {
        char const* name;
        char const* most;
        char const* beyond;
    } const cases[] = {
        {"segments", "15", "16"},          {"brightness.total", "14", "15"}, {"brightness.red", "100", "101"},
        {"brightness.green", "99", "101"}, {"brightness.blue", "98", "101"}, {"limit.dc", "13", "15"},
        {"limit.flash", "12", "15"},       {"limit.ot_off", "100", "39"},    {"limit.ot_decrease", "30", "31"}};
    for (auto const& setting : cases) {
        std::string const name = std::string("illumination.") + setting.name;
        EXPECT_EQ(sim::set_property(properties, name, setting.most), "");
        EXPECT_NE(sim::set_property(properties, name, setting.beyond), "");
    }
    for (auto const& setting : cases) {
        EXPECT_EQ(sim::value_text(properties.find(std::string("illumination.") + setting.name)->get()), setting.most);
    }
    illumination.module.rgbw = true;
    for (auto const& [colour, percent] :
         {std::pair(Illumination::red, 100U), {Illumination::green, 99U}, {Illumination::blue, 98U}}) {
        unsigned int shown = 0;
        EXPECT_EQ(illumination.get_colour(colour, shown), 0);
        EXPECT_EQ(shown, percent);
    }
    EXPECT_EQ(sim::set_property(properties, "illumination.guards.dvs", "false"), "");
    EXPECT_FALSE(illumination.guards().dvs);
    EXPECT_TRUE(illumination.guards().over_temperature);
}

TEST(IlluminationTest, PropertiesShowAndSetTheModule) {
    Illumination illumination;
    sim::Properties properties;
    sim::describe(properties, illumination);
    EXPECT_EQ(sim::set_property(properties, "illumination.temperature.ambient", "35"), "");
    EXPECT_DOUBLE_EQ(illumination.ambient_temperature(), 35.0);
    EXPECT_EQ(sim::set_property(properties, "illumination.brightness.total", "14"), "");
    EXPECT_NE(sim::set_property(properties, "illumination.brightness.total", "15"), "");
    EXPECT_EQ(sim::set_property(properties, "illumination.pattern", "65535"), "");
    EXPECT_NE(sim::set_property(properties, "illumination.pattern", "1"), "");
    EXPECT_EQ(sim::set_property(properties, "illumination.limit.ot_off", "70"), "");
    EXPECT_EQ(illumination.brightness(), 14U);
    EXPECT_EQ(illumination.pattern(), hal::light_pattern_te::strobe);
    EXPECT_EQ(illumination.ot_off_limit(), 70U);
    EXPECT_TRUE(illumination.lit());
    EXPECT_EQ(sim::set_property(properties, "illumination.temperature.internal", "90"), "");
    EXPECT_FALSE(illumination.lit());
    EXPECT_NE(sim::set_property(properties, "illumination.temperature.internal", "126"), "");
    EXPECT_NE(sim::set_property(properties, "illumination.temperature.ambient", "-41"), "");
    EXPECT_NE(sim::set_property(properties, "illumination.lit", "true"), "");
    EXPECT_NE(sim::set_property(properties, "illumination.present", "perhaps"), "");
    EXPECT_EQ(sim::value_text(properties.all().at("illumination.flags.over_temperature").get()), "true");
}

}  // namespace
