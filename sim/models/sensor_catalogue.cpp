// The sensors of the sensor hub: what it reports of each.
#include "sim/models/sensor_catalogue.h"

#include <algorithm>

namespace sim {

namespace {

constexpr double kContinuousMin = 1.5625;         // Hz
constexpr double kContinuousLeast = 1;            // Hz
constexpr double kContinuousMax = 400;            // Hz
constexpr unsigned int kAccelerometerRange = 16;  // g
constexpr unsigned int kGyroscopeRange = 2000;    // degrees per second

constexpr VirtualSensor acceleration(unsigned int id, std::string_view name, double min_rate = kContinuousMin,
                                     double least_rate = kContinuousLeast) {
    return {id, name, true, false, min_rate, least_rate, kContinuousMax, kAccelerometerRange, 16, 7};
}

constexpr VirtualSensor turn_rate(unsigned int id, std::string_view name, double min_rate = kContinuousMin,
                                  double least_rate = kContinuousLeast) {
    return {id, name, true, false, min_rate, least_rate, kContinuousMax, kGyroscopeRange, 16, 7};
}

constexpr VirtualSensor rotation_vector(unsigned int id, std::string_view name) {
    return {id, name, true, true, kContinuousMin, kContinuousLeast, kContinuousMax, 1, 16, 11};
}

constexpr VirtualSensor event(unsigned int id, std::string_view name, unsigned int event_size = 1) {
    return {id, name, false, false, 1, 1, 1, 0, 1, event_size};
}

// As on a hub without magnetometer.
constexpr std::array<VirtualSensor, kVirtualSensors> kVirtual{{
    acceleration(1, "Accelerometer passthrough", 12.5, 12.5),
    acceleration(3, "Accelerometer uncalibrated"),
    acceleration(4, "Accelerometer corrected"),
    acceleration(5, "Accelerometer offset"),
    acceleration(6, "Accelerometer corrected wake up"),
    acceleration(7, "Accelerometer uncalibrated wake up"),
    turn_rate(10, "Gyroscope passthrough", 25, 25),
    turn_rate(12, "Gyroscope uncalibrated"),
    turn_rate(13, "Gyroscope corrected"),
    turn_rate(14, "Gyroscope offset"),
    turn_rate(15, "Gyroscope corrected wake up"),
    turn_rate(16, "Gyroscope uncalibrated wake up"),
    acceleration(28, "Gravity vector"),
    acceleration(29, "Gravity vector wake up"),
    acceleration(31, "Linear acceleration"),
    acceleration(32, "Linear acceleration wake up"),
    rotation_vector(37, "Game rotation vector"),
    rotation_vector(38, "Game rotation vector wake up"),
    event(48, "Tilt detector"),
    event(50, "Step detector"),
    event(52, "Step counter", 5),
    event(53, "Step counter wake up", 5),
    event(55, "Significant motion"),
    event(57, "Wake gesture"),
    event(59, "Glance gesture"),
    event(61, "Pickup gesture"),
    event(63, "Activity recognition", 3),
    event(67, "Wrist tilt"),
    event(69, "Device orientation", 2),
    event(70, "Device orientation wake up", 2),
    event(75, "Stationary detect"),
    event(77, "Motion detect"),
    event(94, "Step detector wake up"),
}};

constexpr std::array<PhysicalSensor, kPhysicalSensors> kPhysical{{
    {1, "Accelerometer", kContinuousMax, kAccelerometerRange, 16},
    {3, "Gyroscope", kContinuousMax, kGyroscopeRange, 16},
    {32, "Step counter", 1, 0, 32},
    {33, "Step detector", 1, 0, 1},
    {34, "Significant motion", 1, 0, 1},
}};

template <typename Table>
auto find(Table const& table, long long id) {
    auto const found = std::find_if(table.begin(), table.end(), [id](auto const& sensor) { return sensor.id == id; });
    return found == table.end() ? nullptr : &*found;
}

}  // namespace

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
