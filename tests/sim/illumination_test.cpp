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
    illumination.module.present = false;
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
    } const flashes[] = {{100, 0xC0, 0.003}, {200, 0xC0, 0.006}, {1000, 0x80, 0.02}, {1001, 0x40, 0.01001}};
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

TEST(IlluminationTest, OneLongStepEndsWhereManyShortOnesDo) {
    Illumination one;
    Illumination many;
    shine(one);
    shine(many);
    for (int second = 1; second <= 1000; ++second) {
        many.advance(seconds(second), kNoSignal);
    }
    one.advance(seconds(1000), kNoSignal);
    EXPECT_NEAR(one.internal_temperature(), many.internal_temperature(), 1e-6);
    EXPECT_NEAR(one.external_temperature(), many.external_temperature(), 1e-6);
    EXPECT_EQ(one.lit(), many.lit());
}

TEST(IlluminationTest, YearsPassAtOnce) {
    Illumination illumination;
    shine(illumination);
    illumination.advance(seconds(1'000'000'000), kNoSignal);
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

TEST(IlluminationTest, MissingModuleDoesNotAnswer) {
    Illumination illumination;
    EXPECT_EQ(illumination.answer(), 0);
    illumination.module.present = false;
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
