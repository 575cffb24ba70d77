// What lies in front of the ranging sensor.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sim {

// A target that a ray of the sensor meets.
struct Target {
    double distance_mm;  // along the sensor's axis
    double reflectance;  // percent
};

// A scene of one shape. Rays are given by the slopes of their direction against the sensor's axis: right and down.
class Scene {
public:
    enum class Shape { nothing, plane, tilted, step, hole };

    // A plane at 800 mm, unless told.
    Scene() = default;
    // "none", "plane MM", "tilted MM YAW [PITCH]" (degrees), "step LEFT_MM RIGHT_MM", "hole MM [DEPTH_MM]", each but
    // the first with "reflectance PERCENT" behind it, if not 50. Nothing for any other text.
    static std::optional<Scene> parse(std::string_view text);
    // As parse() takes it.
    std::string text() const;

    // What the ray meets; nothing when it gets lost.
    std::optional<Target> look(double right, double down) const;
    // Whether every ray meets the same distance; then which.
    std::optional<Target> flat() const;

private:
    bool is_possible() const;

    Shape shape_ = Shape::plane;
    double first_ = 800.0;  // mm
    double second_ = 0.0;   // degrees of yaw, mm
    double third_ = 0.0;    // degrees of pitch
    double reflectance_ = 50.0;
};

}  // namespace sim
