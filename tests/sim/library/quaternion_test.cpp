// Tests of orientation samples as floats and as angles.
#include "hal/quaternion.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "hal/gyro.h"

namespace {

// Yaw, pitch and roll of a rotation given by its quaternion.
std::array<float, 3> angles(float x, float y, float z, float w, bool degrees = true) {
    hal::quaternion_float_t quaternion{x, y, z, w, 0};
    std::array<float, 3> ypr{};
    EXPECT_EQ(hal::gyro_t::quaternion_2_yaw_pitch_roll(quaternion, ypr.data(), degrees), 0);
    return ypr;
}

TEST(QuaternionTest, FixedPointIsScaled) {
    hal::quaternion_s16_t const sample{16384, -16384, 8192, -32768, 286};
    hal::quaternion_float_t quaternion{};
    quaternion = sample;
    EXPECT_EQ(quaternion.x, 1.0F);
    EXPECT_EQ(quaternion.y, -1.0F);
    EXPECT_EQ(quaternion.z, 0.5F);
    EXPECT_EQ(quaternion.w, -2.0F);
    EXPECT_EQ(quaternion.accuracy, 286 / 16384.0F) << "radians";
}

TEST(QuaternionTest, TurnsAboutOneAxisAreOneAngle) {
    float const half = std::sqrt(0.5F);
    EXPECT_EQ(angles(0, 0, 0, 1), (std::array<float, 3>{0, 0, 0}));
    EXPECT_NEAR(angles(0, 0, half, half)[0], 90, 1e-3);
    EXPECT_NEAR(angles(0, std::sin(0.25F), 0, std::cos(0.25F), false)[1], 0.5, 1e-6);
    EXPECT_NEAR(angles(half, 0, 0, half)[2], 90, 1e-3);
}

TEST(QuaternionTest, PitchStaysAtNinetyBeyondTheEnd) {
    EXPECT_NEAR(angles(0, 1, 0, 1)[1], 90, 1e-3);
    EXPECT_NEAR(angles(0, -1, 0, 1)[1], -90, 1e-3);
}

TEST(QuaternionTest, UprightTheWholeTurnIsTheHeading) {
    float const half = std::sqrt(0.5F);
    float const cosine = std::cos(0.25F);
    float const sine = std::sin(0.25F);
    auto const up = angles(-half * sine, half * cosine, half * sine, half * cosine, false);
    EXPECT_NEAR(up[0], 0.5, 1e-3);
    EXPECT_NEAR(up[1], 1.5708, 1e-3);
    EXPECT_EQ(up[2], 0);
    auto const down = angles(half * sine, -half * cosine, half * sine, half * cosine, false);
    EXPECT_NEAR(down[0], 0.5, 1e-3);
    EXPECT_NEAR(down[1], -1.5708, 1e-3);
    EXPECT_EQ(down[2], 0);
    EXPECT_FALSE(std::signbit(angles(0, 1, 0, 1)[0]));
}

}  // namespace
