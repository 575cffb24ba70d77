// The console's own tilt watchdog, sample by sample.
#include "menus/motion/tilt_watchdog.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

#include "hal/gyro.h"
#include "tests/support/screens/motion.h"

namespace {

using screens::kSampleTrace;

std::string const kToRunning =
    "void cb_sensor_data(uint8_t, hal::cb_struct_te, void*)"
    "################################################# Changing to running\n";
std::string const kToWarning = "################################################# Changing to warning  \n";
std::string const kSaved = "###############   Saving done  ###################\n";

constexpr auto kOrientation = hal::cb_struct_te::quaternion_s16;

// The fixed-point sample of three angles in degrees.
hal::quaternion_s16_t sample_of(double yaw, double pitch, double roll) {
    constexpr double kHalfDegree = 3.14159265358979323846 / 360;
    double const cy = std::cos(yaw * kHalfDegree);
    double const sy = std::sin(yaw * kHalfDegree);
    double const cp = std::cos(pitch * kHalfDegree);
    double const sp = std::sin(pitch * kHalfDegree);
    double const cr = std::cos(roll * kHalfDegree);
    double const sr = std::sin(roll * kHalfDegree);
    auto const fixed = [](double value) { return static_cast<std::int16_t>(std::lround(value * 16384)); };
    return {fixed(cy * cp * sr - sy * sp * cr), fixed(cy * sp * cr + sy * cp * sr), fixed(sy * cp * cr - cy * sp * sr),
            fixed(cy * cp * cr + sy * sp * sr), 0};
}

// Begins at the saved position 0, 0, 0 and in the running state, whatever ran before.
class TiltWatchdogTest : public testing::Test {
protected:
    TiltWatchdogTest() {
        g_on_running = [this] { ++running; };
        g_on_warning = [this] { ++warning; };
        save_at(0, 0, 0);
        tilt(0, 0, 0);
        running = 0;
        warning = 0;
    }

    ~TiltWatchdogTest() override {
        g_on_running = nullptr;
        g_on_warning = nullptr;
    }

    // What the watchdog prints of one sample.
    static std::string tilt(double yaw, double pitch, double roll, std::uint8_t sensor_id = 37,
                            hal::cb_struct_te kind = kOrientation) {
        hal::quaternion_s16_t sample = sample_of(yaw, pitch, roll);
        return called_with(sensor_id, kind, &sample);
    }

    static std::string called_with(std::uint8_t sensor_id, hal::cb_struct_te kind, void* data) {
        testing::internal::CaptureStdout();
        cb_sensor_data(sensor_id, kind, data);
        return testing::internal::GetCapturedStdout();
    }

    static std::string save_at(double yaw, double pitch, double roll) {
        request_save_position();
        return tilt(yaw, pitch, roll);
    }

    int running = 0;
    int warning = 0;
};

TEST_F(TiltWatchdogTest, TiltWithinFiveDegreesChangesNothing) {
    EXPECT_EQ(tilt(3, -4, 4.99), kSampleTrace);
    EXPECT_EQ(tilt(-3, 4, -4.9), kSampleTrace);
    EXPECT_EQ(tilt(-4.9, 4.9, -4.9), kSampleTrace);
    EXPECT_EQ(running + warning, 0);
}

TEST_F(TiltWatchdogTest, TiltOfFiveDegreesIsWithin) {
    hal::quaternion_s16_t exact{566, 0, 0, 20697, 0};  // one of few whose roll is 5 to the last bit
    hal::quaternion_float_t quaternion{};
    quaternion = exact;
    float angles[3] = {};
    hal::gyro_t::quaternion_2_yaw_pitch_roll(quaternion, angles, true);
    ASSERT_EQ(angles[2], 5.0F);
    EXPECT_EQ(called_with(37, kOrientation, &exact), kSampleTrace);
    EXPECT_EQ(running + warning, 0);
}

TEST_F(TiltWatchdogTest, TiltBeyondFiveDegreesWarnsOnce) {
    EXPECT_EQ(tilt(0, 0, 5.5), kSampleTrace + kToWarning);
    EXPECT_EQ(tilt(0, 0, 5.5), kSampleTrace);
    EXPECT_EQ(warning, 1);
    EXPECT_EQ(running, 0);
}

TEST_F(TiltWatchdogTest, EachAxisCounts) {
    for (auto const& angles : {std::array{5.5, 0.0, 0.0}, std::array{0.0, -5.5, 0.0}, std::array{0.0, 0.0, -5.5}}) {
        EXPECT_EQ(tilt(angles[0], angles[1], angles[2]), kSampleTrace + kToWarning);
        EXPECT_EQ(tilt(0, 0, 0), kSampleTrace + kToRunning);
    }
    EXPECT_EQ(warning, 3);
    EXPECT_EQ(running, 3);
}

TEST_F(TiltWatchdogTest, ReturnRunsOnce) {
    tilt(0, 20, 0);
    EXPECT_EQ(tilt(0, 6, 0), kSampleTrace);
    EXPECT_EQ(tilt(0, 4, 0), kSampleTrace + kToRunning);
    EXPECT_EQ(tilt(0, 0, 0), kSampleTrace);
    EXPECT_EQ(running, 1);
}

TEST_F(TiltWatchdogTest, BothOrientationSensorsAreJudged) {
    EXPECT_EQ(tilt(0, 20, 0, 38), kSampleTrace + kToWarning);
    EXPECT_EQ(tilt(0, 0, 0, 37), kSampleTrace + kToRunning);
}

TEST_F(TiltWatchdogTest, OtherSamplesPrintTheTraceAlone) {
    EXPECT_EQ(tilt(0, 90, 0, 36), kSampleTrace);
    EXPECT_EQ(tilt(0, 90, 0, 39), kSampleTrace);
    EXPECT_EQ(tilt(0, 90, 0, 37, hal::cb_struct_te::none), kSampleTrace);
    EXPECT_EQ(tilt(0, 90, 0, 37, static_cast<hal::cb_struct_te>(2)), kSampleTrace);
    EXPECT_EQ(called_with(37, kOrientation, nullptr), kSampleTrace);
    EXPECT_EQ(running + warning, 0);
}

TEST_F(TiltWatchdogTest, WithoutBothActionsSamplesAreIgnored) {
    auto const on_warning = g_on_warning;
    g_on_warning = nullptr;
    EXPECT_EQ(tilt(0, 90, 0), kSampleTrace);
    g_on_warning = on_warning;
    g_on_running = nullptr;
    EXPECT_EQ(tilt(0, 90, 0), kSampleTrace);
    EXPECT_EQ(warning, 0);
}

TEST_F(TiltWatchdogTest, SavedPositionIsPrintedOnOneLine) {
    EXPECT_EQ(save_at(0, 0, 180), kSampleTrace + "Saved Pos0  : 0Saved Pos1  : 0Saved Pos2  : 180" + kSaved);
    EXPECT_EQ(save_at(180, 0, 0), kSampleTrace + "Saved Pos0  : 180Saved Pos1  : 0Saved Pos2  : 0" + kSaved);
}

TEST_F(TiltWatchdogTest, SavingTakesOneSampleAndDoesNotJudgeIt) {
    std::string const saved = save_at(0, 40, 0);
    EXPECT_EQ(saved.find("Changing"), std::string::npos) << saved;
    EXPECT_NE(saved.find(kSaved), std::string::npos) << saved;
    EXPECT_EQ(running + warning, 0);
    EXPECT_EQ(tilt(0, 40, 0), kSampleTrace);
    EXPECT_EQ(tilt(0, 0, 0), kSampleTrace + kToWarning);
}

TEST_F(TiltWatchdogTest, SavingWaitsForASampleThatCounts) {
    request_save_position();
    EXPECT_EQ(tilt(0, 40, 0, 36), kSampleTrace);
    EXPECT_EQ(called_with(37, kOrientation, nullptr), kSampleTrace);
    EXPECT_NE(tilt(0, 40, 0).find(kSaved), std::string::npos);
}

TEST_F(TiltWatchdogTest, FirstWrapFindsTheNearDirection) {
    // 170 to -170 is 20 degrees, 178 to -179 is 3.
    save_at(170, 0, 0);
    EXPECT_EQ(tilt(-170, 0, 0), kSampleTrace + kToWarning);
    save_at(178, 0, 0);
    EXPECT_EQ(tilt(-179, 0, 0), kSampleTrace + kToRunning);
}

TEST_F(TiltWatchdogTest, SecondWrapSubtractsAndIsAlwaysOutOfRange) {
    save_at(-170, 0, 0);
    EXPECT_EQ(tilt(170, 0, 0), kSampleTrace + kToWarning);
    EXPECT_EQ(tilt(-170, 0, 0), kSampleTrace + kToRunning);
    save_at(-179, 0, 0);
    EXPECT_EQ(tilt(178, 0, 0), kSampleTrace + kToWarning);  // 3 degrees away
}

}  // namespace
