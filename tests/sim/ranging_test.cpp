// Tests of the ranging sensor's model.
#include "sim/models/ranging.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <iterator>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using sim::Ranging;
using std::chrono::milliseconds;
using std::chrono::seconds;

void look_at(Ranging& ranging, char const* scene) {
    sim::Words words;
    ASSERT_TRUE(sim::split_words(scene, words));
    auto const parsed = sim::parse_scene(words);
    ASSERT_TRUE(parsed);
    ranging.set_scene(*parsed);
}

VL53L5CX_ResultsData shot(Ranging& ranging, unsigned int measurements = 1) {
    VL53L5CX_ResultsData results{};
    EXPECT_EQ(ranging.shot(measurements, results), 0);
    return results;
}

// Without noise and without a cover.
void make_exact(Ranging& ranging) {
    sim::Properties properties;
    sim::describe(properties, ranging);
    ASSERT_EQ(sim::set_property(properties, "ranging.noise", "0"), "");
    ASSERT_EQ(sim::set_property(properties, "ranging.crosstalk.pull", "0"), "");
}

TEST(RangingTest, StartsAsPublished) {
    Ranging const ranging;
    EXPECT_EQ(ranging.resolution(), Ranging::Resolution::zones_4x4);
    EXPECT_EQ(ranging.frequency(), 1);
    EXPECT_EQ(ranging.ranging_mode(), Ranging::RangingMode::autonomous);
    EXPECT_EQ(ranging.integration_time(), 5U);
    EXPECT_EQ(ranging.power_mode(), Ranging::PowerMode::wakeup);
    EXPECT_EQ(Ranging::Calibration().reflectance_percent, 3);
    EXPECT_EQ(Ranging::Calibration().samples, 4);
    EXPECT_EQ(Ranging::Calibration().distance_mm, 600);
}

TEST(RangingTest, RefusedSettingAnswers127AndStays) {
    Ranging ranging;
    for (int zones : {0, 15, 17, 63, 65, 255}) {
        errno = 0;
        EXPECT_EQ(ranging.set_resolution(static_cast<Ranging::Resolution>(zones)), 127) << zones;
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(ranging.resolution(), Ranging::Resolution::zones_4x4);
    EXPECT_EQ(ranging.set_frequency(60), 0);
    EXPECT_EQ(ranging.set_frequency(0), 127);
    EXPECT_EQ(ranging.set_frequency(61), 127);
    EXPECT_EQ(ranging.frequency(), 60);
    for (int mode : {0, 2, 4}) {
        EXPECT_EQ(ranging.set_ranging_mode(static_cast<Ranging::RangingMode>(mode)), 127) << mode;
    }
    EXPECT_EQ(ranging.ranging_mode(), Ranging::RangingMode::autonomous);
    EXPECT_EQ(ranging.set_integration_time(1), 127);
    EXPECT_EQ(ranging.set_integration_time(1001), 127);
    EXPECT_EQ(ranging.integration_time(), 5U);
    EXPECT_EQ(ranging.set_power_mode(static_cast<Ranging::PowerMode>(2)), 127);
    EXPECT_EQ(ranging.power_mode(), Ranging::PowerMode::wakeup);
}

TEST(RangingTest, FineResolutionAllowsFifteenHertz) {
    Ranging ranging;
    ranging.set_frequency(60);
    EXPECT_EQ(ranging.set_resolution(Ranging::Resolution::zones_8x8), 0);
    EXPECT_EQ(ranging.frequency(), 15);
    EXPECT_EQ(ranging.set_frequency(16), 127);
    EXPECT_EQ(ranging.set_frequency(15), 0);
    EXPECT_EQ(ranging.set_resolution(Ranging::Resolution::zones_4x4), 0);
    EXPECT_EQ(ranging.frequency(), 15);
    EXPECT_EQ(ranging.set_frequency(16), 0);
}

TEST(RangingTest, CalibrationParametersHaveLimits) {
    for (auto const& [value, status] : {std::pair{0, 127}, {1, 0}, {99, 0}, {100, 127}}) {
        EXPECT_EQ(Ranging::check_reflectance(static_cast<unsigned short>(value)), status) << value;
    }
    for (auto const& [value, status] : {std::pair{0, 127}, {1, 0}, {16, 0}, {17, 127}}) {
        EXPECT_EQ(Ranging::check_samples(static_cast<unsigned char>(value)), status) << value;
    }
    for (auto const& [value, status] : {std::pair{599, 127}, {600, 0}, {3000, 0}, {3001, 127}}) {
        EXPECT_EQ(Ranging::check_distance(static_cast<unsigned short>(value)), status) << value;
    }
}

TEST(RangingTest, ShotTakesAFrame) {
    Ranging ranging;
    EXPECT_EQ(ranging.shot_time(0), seconds(1));
    EXPECT_EQ(ranging.shot_time(3), seconds(3));
    EXPECT_EQ(ranging.shot_time(4294967295U), seconds(32));
    ranging.set_frequency(10);
    EXPECT_EQ(ranging.shot_time(1), milliseconds(100));
    ranging.set_integration_time(120);
    EXPECT_EQ(ranging.shot_time(1), milliseconds(120));
    ranging.set_resolution(Ranging::Resolution::zones_8x8);
    EXPECT_EQ(ranging.shot_time(1), milliseconds(480));
    ranging.set_ranging_mode(Ranging::RangingMode::continuous);
    EXPECT_EQ(ranging.shot_time(1), milliseconds(100));
}

TEST(RangingTest, AsleepItDoesNothingAndLeavesTheResultsAlone) {
    Ranging ranging;
    EXPECT_EQ(ranging.set_power_mode(Ranging::PowerMode::sleep), 0);
    VL53L5CX_ResultsData results{};
    results.distance_mm[3] = 99;
    EXPECT_EQ(ranging.shot(1, results), 255);
    EXPECT_EQ(results.distance_mm[3], 99);
    EXPECT_EQ(ranging.calibrate_crosstalk({}), 255);
    EXPECT_EQ(ranging.test_illumination_module(true), 255);
    EXPECT_EQ(ranging.shot_time(1) + ranging.calibration_time({}) + ranging.module_test_time(), seconds(0));
}

TEST(RangingTest, PlaneIsSeenAlikeByAllZones) {
    Ranging ranging;
    make_exact(ranging);
    look_at(ranging, "plane 750 reflectance 40");
    VL53L5CX_ResultsData const results = shot(ranging);
    for (int zone = 0; zone < 64; ++zone) {
        SCOPED_TRACE(zone);
        EXPECT_EQ(results.distance_mm[zone], zone < 16 ? 750 : 0);
        EXPECT_EQ(results.nb_target_detected[zone], zone < 16 ? 1 : 0);
        EXPECT_EQ(results.target_status[zone], zone < 16 ? 5 : 0);
        EXPECT_EQ(results.reflectance[zone], zone < 16 ? 40 : 0);
        EXPECT_EQ(results.ambient_per_spad[zone], zone < 16 ? 10U : 0U);
    }
    EXPECT_EQ(results.silicon_temp_degc, 30);
}

TEST(RangingTest, TiltedPlaneShowsItsTiltInTheGrid) {
    Ranging ranging;
    make_exact(ranging);
    ranging.set_resolution(Ranging::Resolution::zones_8x8);
    look_at(ranging, "tilted 1000 20");
    VL53L5CX_ResultsData const results = shot(ranging);
    double const slope = std::tan(31.5 * 3.14159265358979323846 / 180.0) / std::sqrt(2.0) * 7.0 / 8.0;
    double const tilt = std::tan(20.0 * 3.14159265358979323846 / 180.0);
    for (int row = 0; row < 8; ++row) {
        SCOPED_TRACE(row);
        std::int16_t const* const zones = results.distance_mm + row * std::ptrdiff_t{8};
        for (int column = 1; column < 8; ++column) {
            EXPECT_GT(zones[column], zones[column - 1]);
        }
        EXPECT_NEAR(zones[0], 1000.0 / (1.0 + slope * tilt), 1.0);
        EXPECT_NEAR(zones[7], 1000.0 / (1.0 - slope * tilt), 1.0);
    }
}

TEST(RangingTest, ZoneWithoutATargetSaysSo) {
    Ranging ranging;
    ranging.set_resolution(Ranging::Resolution::zones_8x8);
    look_at(ranging, "hole 600");
    VL53L5CX_ResultsData const results = shot(ranging);
    EXPECT_EQ(results.nb_target_detected[27], 0);
    EXPECT_EQ(results.target_status[27], 255);
    EXPECT_EQ(results.distance_mm[27], 0);
    EXPECT_EQ(results.target_status[0], 5);
    for (char const* scene : {"none", "plane 4001", "plane 10", "plane 4000 reflectance 5"}) {
        SCOPED_TRACE(scene);
        look_at(ranging, scene);
        EXPECT_EQ(shot(ranging).target_status[0], 255);
    }
}

TEST(RangingTest, WeakSignalIsHalfConfident) {
    Ranging ranging;
    look_at(ranging, "plane 3900");
    EXPECT_EQ(shot(ranging).target_status[0], 9);
}

TEST(RangingTest, NoiseComesFromItsSeed) {
    Ranging one;
    Ranging other;
    VL53L5CX_ResultsData const first = shot(one);
    VL53L5CX_ResultsData const second = shot(one);
    VL53L5CX_ResultsData const same = shot(other);
    EXPECT_TRUE(std::equal(std::begin(first.distance_mm), std::end(first.distance_mm), std::begin(same.distance_mm)));
    EXPECT_FALSE(
        std::equal(std::begin(first.distance_mm), std::end(first.distance_mm), std::begin(second.distance_mm)));
    sim::Properties properties;
    sim::describe(properties, one);
    EXPECT_EQ(sim::set_property(properties, "ranging.seed", "1"), "");
    VL53L5CX_ResultsData const again = shot(one);
    EXPECT_TRUE(std::equal(std::begin(first.distance_mm), std::end(first.distance_mm), std::begin(again.distance_mm)));
}

TEST(RangingTest, MoreMeasurementsAreLessNoisy) {
    Ranging ranging;
    look_at(ranging, "plane 2000");
    EXPECT_GT(shot(ranging, 1).range_sigma_mm[0], shot(ranging, 16).range_sigma_mm[0]);
    std::uint16_t const before = shot(ranging, 1).range_sigma_mm[0];
    ranging.set_integration_time(500);
    EXPECT_LT(shot(ranging, 1).range_sigma_mm[0], before);
}

TEST(RangingTest, CrosstalkCalibrationTakesItsTimeAndTakesThePullAway) {
    Ranging ranging;
    make_exact(ranging);
    sim::Properties properties;
    sim::describe(properties, ranging);
    EXPECT_EQ(sim::set_property(properties, "ranging.crosstalk.pull", "10"), "");
    EXPECT_EQ(ranging.calibration_time({3, 1, 600}), seconds(1));
    EXPECT_EQ(ranging.calibration_time({3, 4, 600}), milliseconds(2500));
    EXPECT_EQ(ranging.calibration_time({3, 16, 600}), milliseconds(8500));
    look_at(ranging, "plane 2000");
    EXPECT_EQ(shot(ranging).distance_mm[0], 1900);
    look_at(ranging, "plane 600 reflectance 3");
    EXPECT_EQ(ranging.calibrate_crosstalk({}), 0);
    look_at(ranging, "plane 2000");
    EXPECT_EQ(shot(ranging).distance_mm[0], 2000);
}

TEST(RangingTest, CrosstalkCalibrationNeedsItsTarget) {
    Ranging ranging;
    for (char const* scene : {"none", "plane 600", "plane 700 reflectance 3", "tilted 600 5 reflectance 3"}) {
        SCOPED_TRACE(scene);
        look_at(ranging, scene);
        errno = 0;
        EXPECT_EQ(ranging.calibrate_crosstalk({}), 4);
        EXPECT_EQ(errno, EIO);
    }
}

TEST(RangingTest, ModuleTestNeedsTheModuleAndTheEmitter) {
    Ranging ranging;
    EXPECT_EQ(ranging.module_test_time(), seconds(1));
    EXPECT_EQ(ranging.test_illumination_module(true), 0);
    EXPECT_EQ(ranging.test_illumination_module(false), 255);
    sim::Properties properties;
    sim::describe(properties, ranging);
    EXPECT_EQ(sim::set_property(properties, "ranging.emitter_healthy", "false"), "");
    EXPECT_EQ(ranging.test_illumination_module(true), 255);
    VL53L5CX_ResultsData results{};
    EXPECT_EQ(ranging.shot(1, results), 255);
}

TEST(RangingTest, SettingsArePropertiesWithTheSameLimits) {
    Ranging ranging;
    sim::Properties properties;
    sim::describe(properties, ranging);
    EXPECT_EQ(sim::set_property(properties, "ranging.resolution", "64"), "");
    EXPECT_EQ(sim::set_property(properties, "ranging.frequency", "15"), "");
    EXPECT_NE(sim::set_property(properties, "ranging.frequency", "16"), "");
    EXPECT_NE(sim::set_property(properties, "ranging.frequency", "300"), "");
    EXPECT_EQ(sim::set_property(properties, "ranging.mode", "1"), "");
    EXPECT_EQ(sim::set_property(properties, "ranging.integration_time", "20"), "");
    EXPECT_NE(sim::set_property(properties, "ranging.power", "2"), "");
    EXPECT_EQ(ranging.resolution(), Ranging::Resolution::zones_8x8);
    EXPECT_EQ(ranging.frequency(), 15);
    EXPECT_EQ(ranging.ranging_mode(), Ranging::RangingMode::continuous);
    EXPECT_EQ(ranging.integration_time(), 20U);
    EXPECT_EQ(ranging.power_mode(), Ranging::PowerMode::wakeup);
}

TEST(RangingTest, WhatIsSetByHandHasItsRange) {
    struct {
        char const* name;
        char const* best;
        char const* beyond;
        char const* range;
    } const cases[] = {{"ranging.crosstalk.pull", "50", "50.1", "0 to 50"},
                       {"ranging.noise", "100", "-0.1", "0 to 100"},
                       {"ranging.ambient", "10000", "10001", "0 to 10000"},
                       {"ranging.temperature", "-40", "-40.5", "-40 to 125"}};
    Ranging ranging;
    sim::Properties properties;
    sim::describe(properties, ranging);
    for (auto const& expected : cases) {
        std::string const name = expected.name;
        EXPECT_EQ(sim::set_property(properties, name, expected.best), "");
        EXPECT_EQ(sim::set_property(properties, name, expected.beyond), name + ": out of range " + expected.range);
        EXPECT_EQ(sim::value_text(properties.all().at(name).get()), expected.best);
    }
}

TEST(RangingTest, SceneIsAPropertyToo) {
    Ranging ranging;
    sim::Properties properties;
    sim::describe(properties, ranging);
    EXPECT_EQ(sim::set_property(properties, "ranging.scene", "step 500 900"), "");
    EXPECT_EQ(ranging.scene().text(), "step 500 900");
    EXPECT_NE(sim::set_property(properties, "ranging.scene", "step 500"), "");
    EXPECT_EQ(sim::value_text(properties.all().at("ranging.scene").get()), "step 500 900");
}

}  // namespace
