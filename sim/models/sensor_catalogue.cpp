// The sensors of the sensor hub: what it reports of each.
#include "sim/models/sensor_catalogue.h"

#include <algorithm>

namespace sim {

namespace {

constexpr double kContinuousMin = 1.5625;          // Hz
constexpr double kContinuousMax = 400;             // Hz
constexpr double kPassthroughAcceleration = 12.5;  // Hz, the least
constexpr double kPassthroughTurnRate = 25;        // Hz, the least
constexpr double kEventRate = 1;                   // Hz, at which a sensor of events looks
constexpr unsigned int kAccelerometerRange = 16;   // g
constexpr unsigned int kGyroscopeRange = 2000;     // degrees per second
constexpr unsigned int kRotationRange = 1;         // a part of a unit quaternion
constexpr unsigned int kWord = 16;                 // bits
constexpr unsigned int kVectorEvent = 1 + 3 * 2;   // bytes: the id and three words
constexpr unsigned int kRotationEvent = 1 + 5 * 2;

// Degrees, all ours but that of the tilt.
constexpr double kMotion = 2;              // far above the noise, below what a hand can avoid
constexpr double kSignificantMotion = 15;  // taken up and put elsewhere, not just touched
constexpr double kTilt = 35;               // by which a tilt detector is defined
constexpr double kEdge = 30;               // off the level: on a flatter table a screen keeps its way round

constexpr bool kWakeUp = true;

constexpr VirtualSensor acceleration(unsigned int id, std::string_view name, bool wake_up = false,
                                     double min_rate = kContinuousMin) {
    return {id,       name,           Trigger::period,     0,     false,       wake_up,
            min_rate, kContinuousMax, kAccelerometerRange, kWord, kVectorEvent};
}

constexpr VirtualSensor turn_rate(unsigned int id, std::string_view name, bool wake_up = false,
                                  double min_rate = kContinuousMin) {
    return {id,       name,           Trigger::period, 0,     false,       wake_up,
            min_rate, kContinuousMax, kGyroscopeRange, kWord, kVectorEvent};
}

constexpr VirtualSensor rotation_vector(unsigned int id, std::string_view name, bool wake_up = false) {
    return {id,    name,          Trigger::period, 0, true, wake_up, kContinuousMin, kContinuousMax, kRotationRange,
            kWord, kRotationEvent};
}

// Of something that happens.
constexpr VirtualSensor event(unsigned int id, std::string_view name, bool wake_up, Trigger trigger, double angle,
                              unsigned int event_size = 1) {
    return {id, name, trigger, angle, false, wake_up, kEventRate, kEventRate, 0, 1, event_size};
}

constexpr VirtualSensor gesture(unsigned int id, std::string_view name, bool wake_up = kWakeUp,
                                unsigned int event_size = 1) {
    return event(id, name, wake_up, Trigger::never, 0, event_size);
}

// As on a hub without magnetometer.
constexpr std::array<VirtualSensor, kVirtualSensors> kVirtual{{
    acceleration(1, "Accelerometer passthrough", false, kPassthroughAcceleration),
    acceleration(3, "Accelerometer uncalibrated"),
    acceleration(4, "Accelerometer corrected"),
    acceleration(5, "Accelerometer offset"),
    acceleration(6, "Accelerometer corrected wake up", kWakeUp),
    acceleration(7, "Accelerometer uncalibrated wake up", kWakeUp),
    turn_rate(10, "Gyroscope passthrough", false, kPassthroughTurnRate),
    turn_rate(12, "Gyroscope uncalibrated"),
    turn_rate(13, "Gyroscope corrected"),
    turn_rate(14, "Gyroscope offset"),
    turn_rate(15, "Gyroscope corrected wake up", kWakeUp),
    turn_rate(16, "Gyroscope uncalibrated wake up", kWakeUp),
    acceleration(28, "Gravity vector"),
    acceleration(29, "Gravity vector wake up", kWakeUp),
    acceleration(31, "Linear acceleration"),
    acceleration(32, "Linear acceleration wake up", kWakeUp),
    rotation_vector(37, "Game rotation vector"),
    rotation_vector(38, "Game rotation vector wake up", kWakeUp),
    event(48, "Tilt detector", kWakeUp, Trigger::tilt, kTilt),
    gesture(50, "Step detector", false),
    gesture(52, "Step counter", false, 5),
    gesture(53, "Step counter wake up", kWakeUp, 5),
    event(55, "Significant motion", kWakeUp, Trigger::turn, kSignificantMotion),
    gesture(57, "Wake gesture"),
    gesture(59, "Glance gesture"),
    gesture(61, "Pickup gesture"),
    gesture(63, "Activity recognition", kWakeUp, 3),
    gesture(67, "Wrist tilt"),
    event(69, "Device orientation", false, Trigger::edge, kEdge, 2),
    event(70, "Device orientation wake up", kWakeUp, Trigger::edge, kEdge, 2),
    event(75, "Stationary detect", false, Trigger::rest, kMotion),
    event(77, "Motion detect", false, Trigger::turn, kMotion),
    gesture(94, "Step detector wake up"),
}};

constexpr std::array<PhysicalSensor, kPhysicalSensors> kPhysical{{
    {1, "Accelerometer", kContinuousMax, kAccelerometerRange, kWord},
    {3, "Gyroscope", kContinuousMax, kGyroscopeRange, kWord},
    {32, "Step counter", kEventRate, 0, 32},
    {33, "Step detector", kEventRate, 0, 1},
    {34, "Significant motion", kEventRate, 0, 1},
}};

template <typename Table>
auto find(Table const& table, long long id) {
    auto const found = std::find_if(table.begin(), table.end(), [id](auto const& sensor) { return sensor.id == id; });
    return found == table.end() ? nullptr : &*found;
}

}  // namespace

std::optional<double> supported_rate(VirtualSensor const& sensor, double asked) {
    double rate = sensor.min_rate;
    while (rate < asked && rate < sensor.max_rate) {
        rate *= 2;
    }
    return asked <= rate ? std::optional<double>(rate) : std::nullopt;
}

std::array<VirtualSensor, kVirtualSensors> const& virtual_sensors() {
    return kVirtual;
}

std::array<PhysicalSensor, kPhysicalSensors> const& physical_sensors() {
    return kPhysical;
}

VirtualSensor const* find_virtual_sensor(long long id) {
    return find(kVirtual, id);
}

PhysicalSensor const* find_physical_sensor(long long id) {
    return find(kPhysical, id);
}

}  // namespace sim
