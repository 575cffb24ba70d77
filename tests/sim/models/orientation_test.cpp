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

TEST(OrientationTest, AtAPitchOf90TheWholeTurnIsTheHeading) {
    for (double const pitch : {90.0, 89.9, -89.9, -90.0}) {
        double const sign = pitch > 0 ? -1 : 1;
        for (auto const& [yaw, roll] :
             {std::pair(0.0, 0.0), {30.0, 0.0}, {0.0, 30.0}, {170.0, -40.0}, {-100.0, 20.0}}) {
            Angles const angles = sim::angles_of(sim::rotation_of(Angles{yaw, pitch, roll}));
            EXPECT_NEAR(std::remainder(angles.yaw - (yaw + sign * roll), 360), 0, 0.01)
                << pitch << ' ' << yaw << ' ' << roll;
            EXPECT_LE(std::fabs(angles.yaw), 180);
            EXPECT_NEAR(angles.pitch, pitch, 1e-4);
            EXPECT_EQ(angles.roll, 0);
        }
    }
}

TEST(OrientationTest, NoiseAtAPitchOf90MakesTheHeadingNoJump) {
    Orientation orientation;
    orientation.tilt({10, 90, 0}, 0s);
    for (int i = 0; i < 1000; ++i) {
        Angles const angles = sim::angles_of(sim::rotation_of(orientation.measure(Time(2500) * i)));
        ASSERT_NEAR(angles.yaw, 10, 0.2);
        ASSERT_NEAR(angles.pitch, 90, 0.2);
        ASSERT_EQ(angles.roll, 0);
    }
}

TEST(OrientationTest, HeadingRunsAwayAndNothingElseDoes) {
    Orientation orientation;
    orientation.set_noise(0);
    EXPECT_TRUE(orientation.set_drift(10));
    orientation.tilt({20, 40, 60}, 0s);
    expect_angles(sim::rotation_of(orientation.measure(1s, 0s)), {20, 40, 60}, 0.02);
    expect_angles(sim::rotation_of(orientation.measure(1s, 3min)), {50, 40, 60}, 0.02);
    expect_angles(orientation.at(3min), {20, 40, 60});
    for (double const drift : {-0.1, 10.1, std::nan("")}) {
        EXPECT_FALSE(orientation.set_drift(drift));
    }
    EXPECT_EQ(orientation.drift(), 10);
    EXPECT_TRUE(orientation.set_drift(0));
    EXPECT_EQ(Orientation().drift(), 0.1) << "degrees a minute";
}

TEST(OrientationTest, TiltIsTheAngleOfTheVertical) {
    auto const tilt = [](Angles const& one, Angles const& other) {
        return sim::tilt_between(sim::rotation_of(one), sim::rotation_of(other));
    };
    EXPECT_NEAR(tilt({}, {90, 0, 0}), 0, 1e-6);
    EXPECT_NEAR(tilt({30, 0, 0}, {90, 25, 0}), 25, 1e-6);
    EXPECT_NEAR(tilt({0, 0, -10}, {90, 0, 30}), 40, 1e-6);
    EXPECT_NEAR(tilt({0, 0, 0}, {0, 0, 180}), 180, 1e-5);
    EXPECT_NEAR(tilt({0, 60, 0}, {0, 0, 60}), 75.5225, 1e-3);
}

TEST(OrientationTest, TheLowerEdgeIsTheOneThatPointsDown) {
    auto const edge = [](Angles const& angles) { return sim::lower_edge(sim::rotation_of(angles), 30); };
    EXPECT_EQ(edge({}), sim::Edge::none);
    EXPECT_EQ(edge({0, 29.9, 0}), sim::Edge::none);
    EXPECT_EQ(edge({0, 180, 0}), sim::Edge::none);
    EXPECT_EQ(sim::lower_edge(sim::Rotation{}, 0), sim::Edge::none) << "level, whatever counts as flat";
    EXPECT_EQ(edge({50, 30.1, 0}), sim::Edge::front);
    EXPECT_EQ(edge({0, -30.1, 0}), sim::Edge::back);
    EXPECT_EQ(edge({0, 0, -80}), sim::Edge::left);
    EXPECT_EQ(edge({0, 0, 80}), sim::Edge::right);
    EXPECT_EQ(edge({0, 40, 30}), sim::Edge::front);
    EXPECT_EQ(edge({0, 30, 50}), sim::Edge::right);
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
    expect_angles(orientation.at(4999ms), {});
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

TEST(OrientationTest, TurnsEvenlyAroundOneAxisWhicheverItIs) {
    for (auto const& [from, to] : {std::pair(Angles{30, 20, 10}, Angles{100, -40, 60}),
                                   {Angles{170, 20, 10}, Angles{-170, -40, 60}},
                                   {Angles{-160, -50, 100}, Angles{150, 60, -120}}}) {
        Orientation orientation;
        orientation.tilt(from, 0s);
        orientation.tilt(to, 0s, 4s);
        double const whole = sim::angle_between(sim::rotation_of(from), sim::rotation_of(to));
        for (int second = 0; second <= 4; ++second) {
            sim::Rotation const now = orientation.at(std::chrono::seconds(second));
            EXPECT_NEAR(sim::angle_between(sim::rotation_of(from), now), whole * second / 4, 1e-6);
            EXPECT_NEAR(sim::angle_between(now, sim::rotation_of(to)), whole * (4 - second) / 4, 1e-6);
        }
    }
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
    for (Angles const& angles : {Angles{360, 90, 360}, Angles{-360, -90, -360}}) {
        EXPECT_TRUE(orientation.tilt(angles, 1s));
    }
}

TEST(OrientationTest, NoiseOutOfRangeIsRefused) {
    Orientation orientation;
    EXPECT_EQ(orientation.noise(), 0.02) << "degrees";
    EXPECT_TRUE(orientation.set_noise(10));
    for (double const noise : {-0.1, 10.1, std::nan("")}) {
        EXPECT_FALSE(orientation.set_noise(noise));
    }
    EXPECT_EQ(orientation.noise(), 10);
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
    orientation.set_noise(1);
    EXPECT_EQ(orientation.measure(1s).accuracy, 286) << "a degree, in 16384ths of a radian";
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

TEST(OrientationTest, SeedMeasuresTheSameInEveryBuild) {
    Orientation orientation;
    orientation.tilt({20, 40, 60}, 0s);
    orientation.set_noise(10);
    orientation.set_seed(7);
    hal::quaternion_s16_t const sample = orientation.measure(1s);
    EXPECT_NEAR(sample.x, 8442, 1);
    EXPECT_NEAR(sample.y, 5971, 1);
    EXPECT_NEAR(sample.z, 2451, 1);
    EXPECT_NEAR(sample.w, 12470, 1);
}

TEST(OrientationTest, AngleBetweenIsOneTurnWhateverItsAxis) {
    sim::Rotation const one = sim::rotation_of(Angles{10, 20, 30});
    sim::Rotation const other = sim::rotation_of(Angles{40, -50, 60});
    double const cosine = one.w * other.w + one.x * other.x + one.y * other.y + one.z * other.z;
    EXPECT_NEAR(sim::angle_between(one, other), 2 * std::acos(cosine) * 180 / std::acos(-1.0), 1e-6);
}

TEST(OrientationTest, TiltIsANumberAtBothEnds) {
    for (int yaw = 0; yaw < 360; ++yaw) {
        auto const rotation = [&](double pitch, double roll) {
            return sim::rotation_of(Angles{double(yaw), pitch + yaw * 0.1, roll});
        };
        EXPECT_NEAR(sim::tilt_between(rotation(7, 0), rotation(7, 0)), 0, 1e-4);
        EXPECT_NEAR(sim::tilt_between(rotation(7, 0), rotation(7 + 180, 0)), 180, 1e-4);
    }
}

TEST(OrientationTest, AngleBetweenIgnoresTheSignOfTheQuaternion) {
    sim::Rotation const tilted = sim::rotation_of(Angles{0, 20, 0});
    sim::Rotation const same{-tilted.w, -tilted.x, -tilted.y, -tilted.z};
    EXPECT_NEAR(sim::angle_between(tilted, same), 0, 1e-6);
    EXPECT_NEAR(sim::angle_between(sim::Rotation{}, same), 20, 1e-6);
}

}  // namespace
