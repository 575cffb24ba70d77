// Tests of the scene in front of the ranging sensor.
#include "sim/models/scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace {

using sim::Scene;

double distance(Scene const& scene, double right, double down) {
    auto const target = scene.look(right, down);
    return target ? target->distance_mm : -1.0;
}

TEST(SceneTest, TextTellsEveryNumber) {
    EXPECT_EQ(Scene().text(), "plane 800");
    EXPECT_EQ(Scene::nothing().text(), "none");
    EXPECT_EQ(Scene::plane(20.5, 10)->text(), "plane 20.5 reflectance 10");
    EXPECT_EQ(Scene::tilted(800, -20)->text(), "tilted 800 -20 0");
    EXPECT_EQ(Scene::step(500, 900)->text(), "step 500 900");
    EXPECT_EQ(Scene::hole(600, 1200, 88)->text(), "hole 600 1200 reflectance 88");
}

TEST(SceneTest, ScenesAreEqualWhereTheirNumbersAre) {
    EXPECT_EQ(Scene(), *Scene::plane(800));
    EXPECT_EQ(Scene::nothing(), Scene::nothing());
    EXPECT_NE(Scene::nothing(), Scene());
    EXPECT_NE(Scene(), *Scene::plane(801));
    EXPECT_NE(*Scene::step(500, 900), *Scene::hole(500, 900));
    EXPECT_NE(*Scene::step(500, 900), *Scene::step(500, 901));
    EXPECT_NE(*Scene::tilted(500, 1, 2), *Scene::tilted(500, 1, 3));
    EXPECT_NE(*Scene::plane(500, 20), *Scene::plane(500, 21));
    EXPECT_TRUE(*Scene::plane(500, 20) == *Scene::plane(500, 20));
    EXPECT_FALSE(*Scene::plane(500, 20) != *Scene::plane(500, 20));
}

TEST(SceneTest, NumbersAtTheEndsOfTheirRangesMakeOne) {
    EXPECT_TRUE(Scene::plane(0.001));
    EXPECT_TRUE(Scene::plane(10000));
    EXPECT_TRUE(Scene::plane(800, 1));
    EXPECT_TRUE(Scene::plane(800, 100));
    EXPECT_TRUE(Scene::tilted(800, 60, -60));
    EXPECT_TRUE(Scene::hole(600, 600.1));
    EXPECT_FALSE(Scene::hole(600, 600));
    EXPECT_FALSE(Scene::hole(0, 500));
    EXPECT_FALSE(Scene::hole(600, 10001));
    EXPECT_FALSE(Scene::hole(600, -1));
    EXPECT_FALSE(Scene::hole(600, 1));
    EXPECT_FALSE(Scene::step(10001, 500));
    EXPECT_FALSE(Scene::step(500, 500, 0.9));
    EXPECT_FALSE(Scene::tilted(0, 0));
    EXPECT_FALSE(Scene::tilted(800, 0, 60.1));
    EXPECT_FALSE(Scene::tilted(800, 0, 0, 101));
    EXPECT_FALSE(Scene::hole(600, 0, 101));
}

TEST(SceneTest, NumbersOutOfRangeMakeNoScene) {
    EXPECT_FALSE(Scene::plane(0));
    EXPECT_FALSE(Scene::plane(10001));
    EXPECT_FALSE(Scene::plane(std::nan("")));
    EXPECT_FALSE(Scene::plane(800, 0.9));
    EXPECT_FALSE(Scene::plane(800, 101));
    EXPECT_FALSE(Scene::tilted(800, 61));
    EXPECT_FALSE(Scene::tilted(800, 0, -61));
    EXPECT_FALSE(Scene::step(500, 0));
    EXPECT_FALSE(Scene::hole(600, 500));
}

TEST(SceneTest, PlaneIsFlat) {
    auto const scene = *Scene::plane(700, 30);
    EXPECT_EQ(distance(scene, -0.4, 0.4), 700.0);
    ASSERT_TRUE(scene.flat());
    EXPECT_EQ(scene.flat()->distance_mm, 700.0);
    EXPECT_EQ(scene.flat()->reflectance, 30.0);
    EXPECT_FALSE(Scene::step(700, 700)->flat());
    EXPECT_FALSE(Scene::nothing().flat());
    EXPECT_EQ(Scene().flat()->reflectance, 50.0);
}

TEST(SceneTest, TiltedPlaneRecedesToItsSide) {
    auto const scene = *Scene::tilted(1000, 45);
    EXPECT_NEAR(distance(scene, 0.0, 0.3), 1000.0, 1e-9);
    EXPECT_NEAR(distance(scene, 0.5, 0.0), 2000.0, 1e-9);
    EXPECT_NEAR(distance(scene, -0.25, 0.0), 800.0, 1e-9);
    EXPECT_FALSE(Scene::tilted(1000, 60)->look(0.6, 0.0));  // beyond the edge of a plane so steep
    EXPECT_NEAR(distance(*Scene::tilted(1000, 0, 45), 0.3, 0.5), 2000.0, 1e-9);
    EXPECT_FALSE(scene.flat());
    auto const turned = *Scene::tilted(1000, 30, -20);
    EXPECT_NEAR(distance(turned, 0.2, 0.3), 1000.0 / (1.0 - 0.2 * 0.57735026919 + 0.3 * 0.36397023427), 1e-6);
    EXPECT_FALSE(scene.look(1.0001, 0.0)) << "the ray runs along the plane";
    EXPECT_TRUE(scene.look(0.9999, 0.0));
}

TEST(SceneTest, StepAndHole) {
    auto const step = *Scene::step(500, 900);
    EXPECT_EQ(distance(step, -0.01, 0.0), 500.0);
    EXPECT_EQ(distance(step, 0.01, 0.0), 900.0);
    EXPECT_EQ(distance(step, 0.0, 0.0), 900.0);
    auto const hole = *Scene::hole(600, 1200);
    EXPECT_EQ(distance(hole, 0.1, -0.1), 1200.0);
    EXPECT_EQ(distance(hole, 0.2, 0.0), 600.0);
    EXPECT_EQ(distance(hole, 0.15, 0.0), 600.0);
    EXPECT_EQ(distance(hole, 0.0, 0.15), 600.0);
    EXPECT_EQ(distance(hole, 0.1, 0.2), 600.0);
    for (auto const& [right, down] : {std::pair{0.149, 0.0}, {-0.149, 0.0}, {0.0, 0.149}, {0.0, -0.149}}) {
        EXPECT_EQ(distance(hole, right, down), 1200.0);
        EXPECT_EQ(distance(hole, right * 1.01, down * 1.01), 600.0);
    }
    ASSERT_TRUE(Scene::hole(600));
    EXPECT_FALSE(Scene::hole(600)->look(0.0, 0.0));
    EXPECT_FALSE(Scene::nothing().look(0.0, 0.0));
}

}  // namespace
