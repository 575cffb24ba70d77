// Tests of the scene in front of the ranging sensor.
#include "sim/models/scene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using sim::Scene;

double distance(Scene const& scene, double right, double down) {
    auto const target = scene.look(right, down);
    return target ? target->distance_mm : -1.0;
}

TEST(SceneTest, TextIsReadAndWrittenAlike) {
    for (char const* text : {"none", "plane 800", "plane 20.5 reflectance 10", "tilted 800 20 0", "tilted 800 -20 5",
                             "step 500 900", "hole 600 0", "hole 600 1200 reflectance 88"}) {
        SCOPED_TRACE(text);
        auto const scene = Scene::parse(text);
        ASSERT_TRUE(scene);
        EXPECT_EQ(scene->text(), text);
    }
    EXPECT_EQ(Scene::parse("tilted 800 20")->text(), "tilted 800 20 0");
    EXPECT_EQ(Scene::parse("hole 600")->text(), "hole 600 0");
    EXPECT_EQ(Scene().text(), "plane 800");
}

TEST(SceneTest, ImpossibleScenesAreRefused) {
    for (char const* text : {"",
                             "wall 800",
                             "plane",
                             "plane 0",
                             "plane -5",
                             "plane 10001",
                             "plane 800 900",
                             "plane near",
                             "tilted 800",
                             "tilted 800 61",
                             "tilted 800 0 -61",
                             "tilted 800 1 2 3",
                             "step 500",
                             "step 500 0",
                             "hole 600 500",
                             "plane 800 reflectance",
                             "plane 800 reflectance 0",
                             "plane 800 reflectance 101",
                             "plane reflectance 50 800",
                             "plane 800 reflectance 5 reflectance 5",
                             "none 5",
                             "none reflectance 20",
                             "plane nan"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(Scene::parse(text));
    }
}

TEST(SceneTest, PlaneIsFlat) {
    auto const scene = *Scene::parse("plane 700 reflectance 30");
    EXPECT_EQ(distance(scene, -0.4, 0.4), 700.0);
    ASSERT_TRUE(scene.flat());
    EXPECT_EQ(scene.flat()->distance_mm, 700.0);
    EXPECT_EQ(scene.flat()->reflectance, 30.0);
}

TEST(SceneTest, TiltedPlaneRecedesToItsSide) {
    auto const scene = *Scene::parse("tilted 1000 45");
    EXPECT_NEAR(distance(scene, 0.0, 0.3), 1000.0, 1e-9);
    EXPECT_NEAR(distance(scene, 0.5, 0.0), 2000.0, 1e-9);
    EXPECT_NEAR(distance(scene, -0.25, 0.0), 800.0, 1e-9);
    EXPECT_FALSE(Scene::parse("tilted 1000 60")->look(0.6, 0.0));  // beyond the edge of a plane so steep
    EXPECT_NEAR(distance(*Scene::parse("tilted 1000 0 45"), 0.3, 0.5), 2000.0, 1e-9);
    EXPECT_FALSE(scene.flat());
}

TEST(SceneTest, StepAndHole) {
    auto const step = *Scene::parse("step 500 900");
    EXPECT_EQ(distance(step, -0.01, 0.0), 500.0);
    EXPECT_EQ(distance(step, 0.01, 0.0), 900.0);
    auto const hole = *Scene::parse("hole 600 1200");
    EXPECT_EQ(distance(hole, 0.1, -0.1), 1200.0);
    EXPECT_EQ(distance(hole, 0.2, 0.0), 600.0);
    EXPECT_FALSE(Scene::parse("hole 600")->look(0.0, 0.0));
    EXPECT_FALSE(Scene::parse("none")->look(0.0, 0.0));
}

}  // namespace
