// What lies in front of the ranging sensor.
#include "sim/models/scene.h"

#include <cmath>

#include "sim/core/numbers.h"

namespace sim {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;
constexpr double kFarthest = 10000.0;  // mm, further than the sensor sees
constexpr double kSteepest = 60.0;     // degrees; beyond, most of the sensor's rays would miss the plane
// Half the width of the hole at the distance of 1: the coarse grid and the fine one see it in the four zones in their
// middle.
constexpr double kHoleSlope = 0.15;

bool is_distance(double mm) {
    return mm > 0.0 && mm <= kFarthest;
}

bool is_angle(double degrees) {
    return std::abs(degrees) <= kSteepest;
}

}  // namespace

std::optional<Scene> Scene::of(Scene const& scene) {
    bool const possible = scene.reflectance_ >= 1.0 && scene.reflectance_ <= 100.0;
    return possible ? std::optional<Scene>(scene) : std::nullopt;
}

Scene Scene::nothing() {
    Scene scene;
    scene.shape_ = Shape::nothing;
    return scene;
}

std::optional<Scene> Scene::plane(double mm, double reflectance) {
    return is_distance(mm) ? of({Shape::plane, mm, 0.0, 0.0, reflectance}) : std::nullopt;
}

std::optional<Scene> Scene::tilted(double mm, double yaw, double pitch, double reflectance) {
    bool const possible = is_distance(mm) && is_angle(yaw) && is_angle(pitch);
    return possible ? of({Shape::tilted, mm, yaw, pitch, reflectance}) : std::nullopt;
}

std::optional<Scene> Scene::step(double left_mm, double right_mm, double reflectance) {
    bool const possible = is_distance(left_mm) && is_distance(right_mm);
    return possible ? of({Shape::step, left_mm, right_mm, 0.0, reflectance}) : std::nullopt;
}

std::optional<Scene> Scene::hole(double mm, double depth_mm, double reflectance) {
    bool const possible = is_distance(mm) && (depth_mm == 0.0 || (is_distance(depth_mm) && depth_mm > mm));
    return possible ? of({Shape::hole, mm, depth_mm, 0.0, reflectance}) : std::nullopt;
}

bool operator==(Scene const& one, Scene const& other) {
    return one.shape_ == other.shape_ && one.first_ == other.first_ && one.second_ == other.second_ &&
           one.third_ == other.third_ && one.reflectance_ == other.reflectance_;
}

std::string Scene::text() const {
    std::string const first = number_text(first_);
    std::string const second = number_text(second_);
    std::string const reflectance =
        reflectance_ == kUsualReflectance ? "" : " reflectance " + number_text(reflectance_);
    switch (shape_) {
        case Shape::nothing:
            break;
        case Shape::plane:
            return "plane " + first + reflectance;
        case Shape::tilted:
            return "tilted " + first + " " + second + " " + number_text(third_) + reflectance;
        case Shape::step:
            return "step " + first + " " + second + reflectance;
        case Shape::hole:
            return "hole " + first + " " + second + reflectance;
    }
    return "none";
}

std::optional<Target> Scene::look(double right, double down) const {
    double distance = first_;
    switch (shape_) {
        case Shape::plane:  // tilted by nothing
        case Shape::tilted: {
            double const nearing = right * std::tan(second_ * kDegree) + down * std::tan(third_ * kDegree);
            if (nearing >= 1.0) {
                return std::nullopt;  // the ray runs along the plane, or away from it
            }
            distance = first_ / (1.0 - nearing);
            break;
        }
        case Shape::step:
            distance = right < 0.0 ? first_ : second_;
            break;
        case Shape::hole:
            if (std::abs(right) < kHoleSlope && std::abs(down) < kHoleSlope) {
                if (second_ == 0.0) {
                    return std::nullopt;
                }
                distance = second_;
            }
            break;
        case Shape::nothing:
            return std::nullopt;
    }
    return Target{distance, reflectance_};
}

std::optional<Target> Scene::flat() const {
    return shape_ == Shape::plane ? std::optional<Target>({first_, reflectance_}) : std::nullopt;
}

}  // namespace sim
