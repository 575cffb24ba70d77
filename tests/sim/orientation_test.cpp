// The device's orientation: turning, measuring, and the angles of a rotation.
#include "sim/models/orientation.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace std::chrono_literals;
using sim::Angles;
using sim::Orientation;
using sim::Time;

void expect_angles(sim::Rotation const& rotation, Angles const& expected, double tolerance = 1e-9) {
    Angles const angles = sim::angles_of(rotation);
    EXPECT_NEAR(angles.yaw, expected.yaw, tolerance);
    EXPECT_NEAR(angles.pitch, expected.pitch, tolerance);
    EXPECT_NEAR(angles.roll, expected.roll, tolerance);
}

TEST(OrientationTest, AnglesComeBackFromTheirRotation) {
    for (double yaw : {-170.0, -20.0, 0.0, 95.0, 179.0}) {
        for (double pitch : {-89.0, -30.0, 0.0, 60.0}) {
            for (double roll : {-120.0, 0.0, 5.5, 178.0}) {
                expect_angles(sim::rotation_of(Angles{yaw, pitch, roll}), {yaw, pitch, roll}, 1e-6);
            }
        }
    }
}

TEST(OrientationTest, AxesAreZForYawYForPitchXForRoll) {
    double const half = std::sqrt(0.5);
    sim::Rotation const yaw = sim::rotation_of(Angles{90, 0, 0});
    EXPECT_NEAR(yaw.w, half, 1e-12);
    EXPECT_NEAR(yaw.z, half, 1e-12);
    EXPECT_NEAR(sim::rotation_of(Angles{0, 90, 0}).y, half, 1e-12);
    EXPECT_NEAR(sim::rotation_of(Angles{0, 0, 90}).x, half, 1e-12);
}

TEST(OrientationTest, SetOrientationHoldsAtOnce) {
    Orientation orientation;
    expect_angles(orientation.at(0s), {});
    EXPECT_TRUE(orientation.tilt({10, 20, 30}, 5s));
    expect_angles(orientation.at(5s), {10, 20, 30});
    expect_angles(orientation.at(500s), {10, 20, 30});
}

TEST(OrientationTest, TurnsEvenlyOverATime) {
    Orientation orientation;
    EXPECT_TRUE(orientation.tilt({0, 0, 80}, 10s, 4s));
    expect_angles(orientation.at(10s), {});
    expect_angles(orientation.at(11s), {0, 0, 20});
    expect_angles(orientation.at(13s), {0, 0, 60});
    expect_angles(orientation.at(14s), {0, 0, 80});
}

TEST(OrientationTest, TurnsNowhereWhereItLiesThatWayAlready) {
    Orientation orientation;
    EXPECT_TRUE(orientation.tilt({0, 0, 0}, 10s, 4s));
    expect_angles(orientation.at(11s), {});
}

TEST(OrientationTest, TurnsOnTheShortestWay) {
    Orientation orientation;
    orientation.tilt({170, 0, 0}, 0s);
    orientation.tilt({-170, 0, 0}, 0s, 2s);
    EXPECT_NEAR(std::fabs(sim::angles_of(orientation.at(1s)).yaw), 180, 1e-6);
}

TEST(OrientationTest, NewTurnBeginsWhereTheOldOneWas) {
    Orientation orientation;
    orientation.tilt({0, 0, 40}, 0s, 4s);
    orientation.tilt({0, 0, 0}, 2s, 2s);
    expect_angles(orientation.at(2s), {0, 0, 20});
    expect_angles(orientation.at(3s), {0, 0, 10});
}

TEST(OrientationTest, AnglesOutOfRangeAreRefused) {
    Orientation orientation;
    for (Angles const& angles : {Angles{361, 0, 0}, Angles{0, 91, 0}, Angles{0, 0, -361}, Angles{NAN, 0, 0}}) {
        EXPECT_FALSE(orientation.tilt(angles, 1s));
    }
    expect_angles(orientation.at(2s), {});
}

TEST(OrientationTest, SampleIsFixedPoint) {
    Orientation orientation;
    orientation.set_noise(0);
    orientation.tilt({0, 0, 60}, 0s);
    hal::quaternion_s16_t const sample = orientation.measure(1s);
    EXPECT_EQ(sample.x, 8192);
    EXPECT_EQ(sample.y, 0);
    EXPECT_EQ(sample.z, 0);
    EXPECT_EQ(sample.w, 14189);
    EXPECT_EQ(sample.accuracy, 0);
    EXPECT_NEAR(sim::angle_between(sim::rotation_of(sample), sim::Rotation{}), 60, 0.01);
}

TEST(OrientationTest, NoiseHasItsDeviationAndNoBias) {
    Orientation orientation;
    orientation.set_noise(0.5);
    constexpr int kSamples = 4000;
    double sum = 0;
    double squares = 0;
    for (int i = 0; i < kSamples; ++i) {
        double const roll = sim::angles_of(sim::rotation_of(orientation.measure(Time(2500) * i))).roll;
        sum += roll;
        squares += roll * roll;
    }
    EXPECT_NEAR(sum / kSamples, 0, 0.03);
    EXPECT_NEAR(std::sqrt(squares / kSamples), 0.5, 0.03);
}

TEST(OrientationTest, NoiseDependsOnSeedAndTimeAlone) {
    Orientation one;
    Orientation other;
    one.set_noise(1);
    other.set_noise(1);
    other.measure(3s);
    EXPECT_EQ(one.measure(7s).x, other.measure(7s).x);
    EXPECT_NE(one.measure(7s).x, one.measure(8s).x);
    other.set_seed(2);
    EXPECT_NE(one.measure(7s).x, other.measure(7s).x);
}

TEST(OrientationTest, AngleBetweenIgnoresTheSignOfTheQuaternion) {
    sim::Rotation const tilted = sim::rotation_of(Angles{0, 20, 0});
    sim::Rotation const same{-tilted.w, -tilted.x, -tilted.y, -tilted.z};
    EXPECT_NEAR(sim::angle_between(tilted, same), 0, 1e-6);
    EXPECT_NEAR(sim::angle_between(sim::Rotation{}, same), 20, 1e-6);
}

}  // namespace
