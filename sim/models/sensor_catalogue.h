// The sensors of the sensor hub: what it reports of each.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace sim {

// What makes a virtual sensor report.
enum class Trigger {
    period,  // each period of its rate
    turn,    // the device has turned since the last report by an angle
    tilt,    // its vertical has
    edge,    // another of its edges is the lower one
    rest,    // it lies still after it has moved
    never,   // a person who walks with it, or wears it
};

struct VirtualSensor {
    unsigned int id;
    std::string_view name;
    Trigger trigger;
    double angle;             // degrees, of the trigger; 0: it has none
    bool orientation;         // its samples carry the orientation
    bool wake_up;             // they go through the wake-up FIFO
    double min_rate;          // Hz
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

// The rate in force where one above 0 is asked for, Hz: the least of the sensor's own that is not below it. These are
// its least doubled again and again; nothing where it asks for more than its greatest.
std::optional<double> supported_rate(VirtualSensor const& sensor, double asked);

// In the order of their ids.
std::array<VirtualSensor, kVirtualSensors> const& virtual_sensors();
std::array<PhysicalSensor, kPhysicalSensors> const& physical_sensors();

// Null where the hub has no such sensor.
VirtualSensor const* find_virtual_sensor(long long id);
PhysicalSensor const* find_physical_sensor(long long id);

}  // namespace sim
