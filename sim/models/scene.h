// What lies in front of the ranging sensor.
#pragma once

#include <optional>
#include <string>

namespace sim {

// A target that a ray of the sensor meets.
struct Target {
    double distance_mm;  // along the sensor's axis
    double reflectance;  // percent
};

// A scene of one shape. Rays are given by the slopes of their direction against the sensor's axis: right and down.
class Scene {
public:
    static constexpr double kUsualReflectance = 50.0;  // percent, of a grey wall

    // A plane at 800 mm.
    Scene() = default;
    static Scene nothing();
    // Distances above 0 mm and at most 10000, on the sensor's axis; reflectance 1 to 100 percent. Nothing where a
    // number is out of its range.
    static std::optional<Scene> plane(double mm, double reflectance = kUsualReflectance);
    // Turned by at most 60 degrees: its right side, its lower side further away.
    static std::optional<Scene> tilted(double mm, double yaw, double pitch = 0.0,
                                       double reflectance = kUsualReflectance);
    static std::optional<Scene> step(double left_mm, double right_mm, double reflectance = kUsualReflectance);
    // What is seen through the hole lies further away; depth 0: there is nothing.
    static std::optional<Scene> hole(double mm, double depth_mm = 0.0, double reflectance = kUsualReflectance);

    // As the command scene has it.
    std::string text() const;

    // What the ray meets; nothing when it gets lost.
    std::optional<Target> look(double right, double down) const;
    // Whether every ray meets the same distance; then which.
    std::optional<Target> flat() const;

    friend bool operator==(Scene const& one, Scene const& other);
    friend bool operator!=(Scene const& one, Scene const& other) { return !(one == other); }

private:
    enum class Shape { nothing, plane, tilted, step, hole };

    Scene(Shape shape, double first, double second, double third, double reflectance)
        : shape_(shape), first_(first), second_(second), third_(third), reflectance_(reflectance) {}
    // Nothing where the reflectance is out of its range.
    static std::optional<Scene> of(Scene const& scene);

    Shape shape_ = Shape::plane;
    double first_ = 800.0;  // mm, well within the reach of every setting of the sensor
    double second_ = 0.0;   // degrees of yaw, mm
    double third_ = 0.0;    // degrees of pitch
    double reflectance_ = kUsualReflectance;
};

}  // namespace sim
