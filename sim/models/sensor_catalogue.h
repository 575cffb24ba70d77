// The sensors of the sensor hub: what it reports of each.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace sim {

struct VirtualSensor {
    unsigned int id;
    std::string_view name;
    bool continuous;          // delivers samples at its rate, not events
    bool orientation;         // its samples carry the orientation
    double min_rate;          // Hz, the sensor's own
    double least_rate;        // Hz, that may be asked for: below its own least the hub leaves samples out
    double max_rate;          // Hz
    unsigned int max_range;   // in the sensor's unit; 0: none
    unsigned int resolution;  // bits
    unsigned int event_size;  // bytes in the FIFO
};

struct PhysicalSensor {
    unsigned int id;
    std::string_view name;
    double max_rate;          // Hz
    unsigned int max_range;   // in the sensor's unit; 0: none
    unsigned int resolution;  // bits
};

constexpr std::size_t kVirtualSensors = 33;
constexpr std::size_t kPhysicalSensors = 5;

// In the order of their ids.
std::array<VirtualSensor, kVirtualSensors> const& virtual_sensors();
std::array<PhysicalSensor, kPhysicalSensors> const& physical_sensors();

// Null where the hub has no such sensor.
VirtualSensor const* find_virtual_sensor(long long id);
PhysicalSensor const* find_physical_sensor(long long id);

}  // namespace sim
