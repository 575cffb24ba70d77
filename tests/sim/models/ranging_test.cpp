// Tests of the ranging sensor's model.
#include "sim/models/ranging.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <iterator>
#include <vector>

#include "sim/control/value_words.h"
#include "sim/device/describe.h"

namespace {

using sim::Ranging;
using std::chrono::milliseconds;
using std::chrono::seconds;

void look_at(Ranging& ranging, char const* scene) {
    sim::Properties properties;
    sim::describe(properties, ranging);
    ASSERT_EQ(sim::set_property(properties, "ranging.scene", scene), "");
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

// What is measured of the middle of a scene that is alike everywhere, over so many shots.
struct Spread {
    double mean;       // mm
    double deviation;  // mm
};

Spread spread(Ranging& ranging, unsigned int measurements = 1) {
    constexpr int kShots = 1000;
    double sum = 0.0;
    double squares = 0.0;
    int count = 0;
    for (int i = 0; i < kShots; ++i) {
        VL53L5CX_ResultsData const results = shot(ranging, measurements);
        for (int zone = 0; zone < static_cast<int>(ranging.resolution()); ++zone) {
            EXPECT_EQ(results.nb_target_detected[zone], 1);
            double const distance = results.distance_mm[zone];
            sum += distance;
            squares += distance * distance;
            ++count;
        }
    }
    double const mean = sum / count;
    return {mean, std::sqrt(squares / count - mean * mean)};
}

// The spread of a plane at two metres, where whole millimetres do not matter.
double spread_at_two_metres(void (*change)(Ranging&), unsigned int measurements = 1) {
    Ranging ranging;
    look_at(ranging, "plane 2000");
    EXPECT_EQ(ranging.set_crosstalk_pull(0.0), 0);
    change(ranging);
    Spread const result = spread(ranging, measurements);
    EXPECT_NEAR(result.mean, 2000.0, 0.5);
    return result.deviation;
}

// The furthest plane in mm that zone 0 sees, and how far it is sure of that.
struct Reach {
    int seen;
    int sure;
};

Reach reach(Ranging& ranging, double reflectance) {
    Reach reach{0, 0};
    for (int mm = 20; mm <= 4000; mm += 10) {
        ranging.set_scene(*sim::Scene::plane(mm, reflectance));
        std::uint8_t const status = shot(ranging).target_status[0];
        reach.seen = status != 255 ? mm : reach.seen;
        reach.sure = status == 5 ? mm : reach.sure;
    }
    return reach;
}

TEST(RangingTest, StartsAsPublished) {
    Ranging const ranging;
    EXPECT_TRUE(ranging.emitter_healthy());
    EXPECT_FALSE(ranging.crosstalk_compensated());
    EXPECT_EQ(ranging.noise(), 1.0);
    EXPECT_EQ(ranging.crosstalk_pull(), 2.0);
    EXPECT_EQ(ranging.ambient_light(), 10.0);
    EXPECT_EQ(ranging.temperature(), 30.0);
    EXPECT_EQ(ranging.scene().text(), "plane 800");
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
    EXPECT_EQ(ranging.set_frequency(1), 0);
    EXPECT_EQ(ranging.frequency(), 1);
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

TEST(RangingTest, PitchShowsFromRowToRow) {
    Ranging ranging;
    make_exact(ranging);
    look_at(ranging, "tilted 1000 0 30");
    VL53L5CX_ResultsData const results = shot(ranging);
    double const half_width = std::tan(31.5 * 3.14159265358979323846 / 180.0) / std::sqrt(2.0);
    double const tilt = std::tan(30.0 * 3.14159265358979323846 / 180.0);
    for (int zone = 0; zone < 16; ++zone) {
        int const row = zone / 4;
        double const down = (row - 1.5) / 2.0 * half_width;
        EXPECT_NEAR(results.distance_mm[zone], 1000.0 / (1.0 - down * tilt), 0.51) << zone;
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
    EXPECT_EQ(one.seed(), 1U);
    EXPECT_EQ(sim::set_property(properties, "ranging.seed", "2"), "");
    EXPECT_EQ(one.seed(), 2U);
    EXPECT_EQ(sim::set_property(properties, "ranging.seed", "1"), "");
    VL53L5CX_ResultsData const again = shot(one);
    EXPECT_TRUE(std::equal(std::begin(first.distance_mm), std::end(first.distance_mm), std::begin(again.distance_mm)));
}

TEST(RangingTest, SpreadFollowsTheLightThatComesBack) {
    // 500 mm of pulse by the root of the counts: 5 + 10 kcps/SPAD on 256 SPADs in 5 ms, 5 of them the target's.
    double const usual = spread_at_two_metres([](Ranging&) {});
    EXPECT_NEAR(usual, 500.0 * std::sqrt(15.0 * 256 * 5) / (5.0 * 256 * 5), 0.15);
    double const four = spread_at_two_metres([](Ranging&) {}, 4);
    EXPECT_NEAR(usual / four, 2.0, 0.05);
    double const longer = spread_at_two_metres([](Ranging& ranging) { ranging.set_integration_time(20); });
    EXPECT_NEAR(usual / longer, 2.0, 0.05);
    double const noisier = spread_at_two_metres([](Ranging& ranging) { ranging.set_noise(2.0); });
    EXPECT_NEAR(noisier / usual, 2.0, 0.05);
    double const brighter =
        spread_at_two_metres([](Ranging& ranging) { look_at(ranging, "plane 2000 reflectance 100"); });
    EXPECT_NEAR(usual / brighter, 2.0 * std::sqrt(15.0 / 20.0), 0.05);
    double const dark = spread_at_two_metres([](Ranging& ranging) { ranging.set_ambient_light(0.0); });
    EXPECT_NEAR(usual / dark, std::sqrt(15.0 / 5.0), 0.05);
    double const fine = spread_at_two_metres([](Ranging& ranging) {
        ranging.set_resolution(Ranging::Resolution::zones_8x8);
        ranging.set_integration_time(20);
    });
    EXPECT_NEAR(fine / usual, 1.0, 0.05) << "a quarter of the light in four times the time";
    double const continuous = spread_at_two_metres([](Ranging& ranging) {
        ranging.set_ranging_mode(Ranging::RangingMode::continuous);
        ranging.set_frequency(20);
    });
    EXPECT_NEAR(usual / continuous, std::sqrt(50.0 / 5.0), 0.1) << "it gathers light for all of its period";
    double const fine_continuous = spread_at_two_metres([](Ranging& ranging) {
        ranging.set_resolution(Ranging::Resolution::zones_8x8);
        ranging.set_ranging_mode(Ranging::RangingMode::continuous);
        ranging.set_frequency(10);
    });
    EXPECT_NEAR(usual / fine_continuous, std::sqrt(25.0 / 4.0 / 5.0), 0.05) << "and a quarter of it for each zone";
}

TEST(RangingTest, DeviationsAreNormal) {
    Ranging ranging;
    look_at(ranging, "plane 2000");
    ranging.set_crosstalk_pull(0.0);
    ranging.set_noise(5.0);
    double const deviation = spread(ranging).deviation;
    int beyond_one = 0;
    int beyond_two = 0;
    int count = 0;
    for (int i = 0; i < 1000; ++i) {
        VL53L5CX_ResultsData const results = shot(ranging);
        for (int zone = 0; zone < 16; ++zone) {
            double const off = std::abs(results.distance_mm[zone] - 2000.0);
            beyond_one += off > deviation ? 1 : 0;
            beyond_two += off > 2.0 * deviation ? 1 : 0;
            ++count;
        }
    }
    EXPECT_NEAR(static_cast<double>(beyond_one) / count, 0.317, 0.02);
    EXPECT_NEAR(static_cast<double>(beyond_two) / count, 0.0455, 0.01);
}

TEST(RangingTest, SigmaThatIsReportedIsTheSpread) {
    Ranging ranging;
    look_at(ranging, "plane 2000");
    ranging.set_noise(10.0);
    double const deviation = spread(ranging).deviation;
    EXPECT_NEAR(shot(ranging).range_sigma_mm[0], deviation, 2.0);
    EXPECT_NEAR(shot(ranging, 9).range_sigma_mm[0], deviation / 3.0, 1.0);
}

TEST(RangingTest, FineGridAndAmbientLightCostReach) {
    Ranging usual;
    EXPECT_EQ(reach(usual, 50.0).seen, 4000);
    EXPECT_NEAR(reach(usual, 50.0).sure, 3220, 10);  // 1.93 kcps/SPAD are 20 times the root of their counts
    EXPECT_NEAR(reach(usual, 10.0).seen, 2070, 10);
    Ranging fine;
    EXPECT_EQ(fine.set_resolution(Ranging::Resolution::zones_8x8), 0);
    EXPECT_NEAR(reach(fine, 50.0).seen, 3220, 10);  // a quarter of the counts, half of the clearness
    EXPECT_NEAR(reach(fine, 50.0).sure, 2180, 10);
    Ranging bright;
    bright.set_ambient_light(1000.0);
    EXPECT_NEAR(reach(bright, 50.0).seen, 1500, 10);
    Ranging dark;
    dark.set_ambient_light(0.0);
    EXPECT_EQ(reach(dark, 50.0).sure, 4000);
}

TEST(RangingTest, ZonesTellTheirSpadsTheirSignalAndTheAmbientLight) {
    Ranging ranging;
    look_at(ranging, "plane 500 reflectance 25");
    ranging.set_ambient_light(123.0);
    ranging.set_temperature(-39.6);
    VL53L5CX_ResultsData const coarse = shot(ranging);
    EXPECT_EQ(coarse.nb_spads_enabled[15], 256U);
    EXPECT_EQ(coarse.signal_per_spad[15], 40U);  // 40 at one metre, a quarter reflected, half the distance
    EXPECT_EQ(coarse.ambient_per_spad[15], 123U);
    EXPECT_EQ(coarse.silicon_temp_degc, -40);
    EXPECT_EQ(coarse.nb_spads_enabled[16], 0U);
    ranging.set_resolution(Ranging::Resolution::zones_8x8);
    EXPECT_EQ(shot(ranging).nb_spads_enabled[63], 64U);
}

TEST(RangingTest, DistancesStayWithinTheSensorsRange) {
    Ranging ranging;
    ranging.set_crosstalk_pull(0.0);
    ranging.set_noise(100.0);
    ranging.set_integration_time(2);
    ranging.set_ambient_light(0.0);
    int nearest = 4000;
    int farthest = 0;
    for (char const* scene : {"plane 20 reflectance 1", "plane 4000 reflectance 100"}) {
        look_at(ranging, scene);
        for (int i = 0; i < 20; ++i) {
            VL53L5CX_ResultsData const results = shot(ranging);
            for (int zone = 0; zone < 16; ++zone) {
                EXPECT_EQ(results.nb_target_detected[zone], 1);
                nearest = std::min<int>(nearest, results.distance_mm[zone]);
                farthest = std::max<int>(farthest, results.distance_mm[zone]);
            }
        }
    }
    EXPECT_EQ(nearest, 0);
    EXPECT_EQ(farthest, 4000);
    look_at(ranging, "plane 19.9");
    EXPECT_EQ(shot(ranging).target_status[0], 255);
}

TEST(RangingTest, ShotFillsTheWholeRecord) {
    Ranging ranging;
    VL53L5CX_ResultsData results{};
    results.distance_mm[20] = 5;
    results.motion_indicator.status = 3;
    EXPECT_EQ(ranging.shot(1, results), 0);
    EXPECT_EQ(results.distance_mm[20], 0);
    EXPECT_EQ(results.motion_indicator.status, 0);
}

TEST(RangingTest, NoMeasurementsCountAsOneAndManyAsTheMost) {
    Ranging ranging;
    ranging.set_noise(100.0);
    look_at(ranging, "plane 2000");
    EXPECT_EQ(shot(ranging, 0).range_sigma_mm[0], shot(ranging, 1).range_sigma_mm[0]);
    EXPECT_EQ(shot(ranging, 4000).range_sigma_mm[0], shot(ranging, 32).range_sigma_mm[0]);
    EXPECT_LT(shot(ranging, 32).range_sigma_mm[0], shot(ranging, 31).range_sigma_mm[0]);
}

TEST(RangingTest, ZoneWithoutATargetLeavesTheNoiseOfTheOthersAlone) {
    Ranging one;
    Ranging other;
    look_at(one, "step 600 600");
    look_at(other, "step 5000 600");
    VL53L5CX_ResultsData const first = shot(one);
    VL53L5CX_ResultsData const second = shot(other);
    for (int const zone : {2, 3, 6, 7, 10, 11, 14, 15}) {
        EXPECT_EQ(first.distance_mm[zone], second.distance_mm[zone]) << zone;
    }
    EXPECT_EQ(second.target_status[0], 255);
}

TEST(RangingTest, AsleepItRefusesSettingsAndWakesUpWithTheOldOnes) {
    Ranging ranging;
    EXPECT_EQ(ranging.set_power_mode(Ranging::PowerMode::sleep), 0);
    errno = 0;
    EXPECT_EQ(ranging.set_resolution(Ranging::Resolution::zones_8x8), 255);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(ranging.set_frequency(10), 255);
    EXPECT_EQ(ranging.set_ranging_mode(Ranging::RangingMode::continuous), 255);
    EXPECT_EQ(ranging.set_integration_time(20), 255);
    EXPECT_EQ(ranging.set_integration_time(1), 127) << "what is never legal needs no sensor";
    sim::Properties properties;
    sim::describe(properties, ranging);
    EXPECT_EQ(sim::set_property(properties, "ranging.frequency", "10"),
              "ranging.frequency: the sensor sleeps; it takes an integer from 1 to 60 Hz");
    EXPECT_EQ(ranging.set_power_mode(Ranging::PowerMode::wakeup), 0);
    EXPECT_EQ(ranging.resolution(), Ranging::Resolution::zones_4x4);
    EXPECT_EQ(ranging.frequency(), 1);
    EXPECT_EQ(ranging.ranging_mode(), Ranging::RangingMode::autonomous);
    EXPECT_EQ(ranging.integration_time(), 5U);
    EXPECT_EQ(ranging.set_integration_time(2), 0);
    EXPECT_EQ(ranging.set_integration_time(1000), 0);
    EXPECT_EQ(ranging.set_frequency(10), 0);
}

TEST(RangingTest, WithoutPowerItForgetsWhatItWasToldAndFound) {
    Ranging ranging;
    look_at(ranging, "plane 600 reflectance 3");
    EXPECT_EQ(ranging.calibrate_crosstalk({}), 0);
    EXPECT_TRUE(ranging.crosstalk_compensated());
    ranging.set_resolution(Ranging::Resolution::zones_8x8);
    ranging.set_frequency(9);
    ranging.set_ranging_mode(Ranging::RangingMode::continuous);
    ranging.set_integration_time(70);
    ranging.set_power_mode(Ranging::PowerMode::sleep);
    ranging.set_noise(3.0);
    ranging.lose_power();
    EXPECT_EQ(ranging.resolution(), Ranging::Resolution::zones_4x4);
    EXPECT_EQ(ranging.frequency(), 1);
    EXPECT_EQ(ranging.ranging_mode(), Ranging::RangingMode::autonomous);
    EXPECT_EQ(ranging.integration_time(), 5U);
    EXPECT_EQ(ranging.power_mode(), Ranging::PowerMode::wakeup);
    EXPECT_FALSE(ranging.crosstalk_compensated());
    EXPECT_EQ(ranging.noise(), 3.0);
    EXPECT_EQ(ranging.scene().text(), "plane 600 reflectance 3");
}

TEST(RangingTest, CrosstalkCalibrationCanBeUndoneByHand) {
    Ranging ranging;
    make_exact(ranging);
    ranging.set_crosstalk_pull(10.0);
    sim::Properties properties;
    sim::describe(properties, ranging);
    look_at(ranging, "plane 1000");
    EXPECT_EQ(shot(ranging).distance_mm[5], 975);
    EXPECT_EQ(sim::set_property(properties, "ranging.crosstalk.compensated", "true"), "");
    EXPECT_EQ(shot(ranging).distance_mm[5], 1000);
    EXPECT_EQ(sim::set_property(properties, "ranging.crosstalk.compensated", "false"), "");
    EXPECT_EQ(shot(ranging).distance_mm[5], 975);
    EXPECT_EQ(sim::value_text(properties.all().at("ranging.crosstalk.compensated").get()), "false");
}

TEST(RangingTest, CoverPullsATargetByItsShare) {
    Ranging ranging;
    EXPECT_EQ(ranging.set_noise(0.0), 0);
    look_at(ranging, "plane 4000 reflectance 100");
    EXPECT_EQ(shot(ranging).distance_mm[0], 3920);
    look_at(ranging, "plane 2000");
    EXPECT_EQ(shot(ranging).distance_mm[0], 1980);
}

TEST(RangingTest, CrosstalkTargetMayBeATenthOff) {
    struct {
        char const* scene;
        int status;
    } const cases[] = {{"plane 1100 reflectance 50", 0},   {"plane 1101 reflectance 50", 4},
                       {"plane 900 reflectance 50", 0},    {"plane 899 reflectance 50", 4},
                       {"plane 1000 reflectance 55", 0},   {"plane 1000 reflectance 55.1", 4},
                       {"plane 1000 reflectance 44.9", 4}, {"plane 1000 reflectance 45", 0}};
    for (auto const& expected : cases) {
        SCOPED_TRACE(expected.scene);
        Ranging ranging;
        look_at(ranging, expected.scene);
        EXPECT_EQ(ranging.calibrate_crosstalk({50, 4, 1000}), expected.status);
        EXPECT_EQ(ranging.crosstalk_compensated(), expected.status == 0);
    }
    Ranging broken;
    look_at(broken, "plane 600 reflectance 3");
    broken.set_emitter_healthy(false);
    EXPECT_EQ(broken.calibrate_crosstalk({}), 255);
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
    } const cases[] = {{"ranging.crosstalk.pull", "50", "50.1", "0 to 50 percent"},
                       {"ranging.noise", "100", "-0.1", "0 to 100"},
                       {"ranging.ambient", "10000", "10001", "0 to 10000 kcps/SPAD"},
                       {"ranging.temperature", "-40", "-40.5", "-40 to 125 C"},
                       {"ranging.crosstalk.pull", "0", "-0.1", "0 to 50 percent"},
                       {"ranging.noise", "0", "100.1", "0 to 100"},
                       {"ranging.ambient", "0", "-0.1", "0 to 10000 kcps/SPAD"},
                       {"ranging.temperature", "125", "125.1", "-40 to 125 C"}};
    Ranging ranging;
    sim::Properties properties;
    sim::describe(properties, ranging);
    for (auto const& expected : cases) {
        std::string const name = expected.name;
        EXPECT_EQ(sim::set_property(properties, name, expected.best), "");
        EXPECT_EQ(sim::set_property(properties, name, expected.beyond),
                  name + ": " + expected.beyond + " is not a number from " + expected.range);
        EXPECT_EQ(sim::value_text(properties.all().at(name).get()), expected.best);
    }
}

TEST(RangingTest, WhatSurroundsItHasItsRangeInTheModelToo) {
    Ranging ranging;
    for (double beyond : {-0.1, 10000.1}) {
        EXPECT_EQ(ranging.set_ambient_light(beyond), 127) << beyond;
    }
    for (double beyond : {-0.1, 100.1}) {
        EXPECT_EQ(ranging.set_noise(beyond), 127) << beyond;
    }
    for (double beyond : {-0.1, 50.1}) {
        EXPECT_EQ(ranging.set_crosstalk_pull(beyond), 127) << beyond;
    }
    for (double beyond : {-40.1, 125.1}) {
        EXPECT_EQ(ranging.set_temperature(beyond), 127) << beyond;
    }
    EXPECT_EQ(ranging.ambient_light(), 10.0);
    EXPECT_EQ(ranging.noise(), 1.0);
    EXPECT_EQ(ranging.crosstalk_pull(), 2.0);
    EXPECT_EQ(ranging.temperature(), 30.0);
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

TEST(RangingTest, ViewIsWhatAShotMeasuresWithoutNoiseAndChangesNothing) {
    Ranging ranging;
    look_at(ranging, "tilted 900 30 20");
    Ranging undisturbed = ranging;
    std::vector<int> const view = ranging.view();
    VL53L5CX_ResultsData const noisy = shot(ranging);
    EXPECT_EQ(noisy.distance_mm[0], shot(undisturbed).distance_mm[0]);
    ASSERT_EQ(ranging.set_noise(0.0), 0);
    VL53L5CX_ResultsData const exact = shot(ranging);
    ASSERT_EQ(view.size(), 16U);
    EXPECT_LT(view.front(), view.back());
    for (std::size_t zone = 0; zone < view.size(); ++zone) {
        EXPECT_EQ(view[zone], exact.distance_mm[zone]) << zone;
    }
}

TEST(RangingTest, ViewHasNothingOfATargetOutOfReachAndIsEmptyWhileItSleeps) {
    Ranging ranging;
    look_at(ranging, "plane 4500");
    EXPECT_EQ(ranging.view(), std::vector<int>(16, 0));
    ASSERT_EQ(ranging.set_power_mode(Ranging::PowerMode::sleep), 0);
    EXPECT_TRUE(ranging.view().empty());
}

}  // namespace
