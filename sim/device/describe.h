// What a user may see and set of each component: its properties, by the names that `show` and `set` use.
#pragma once

#include <functional>

#include "sim/device/properties.h"
#include "sim/models/autofocus.h"
#include "sim/models/illumination.h"
#include "sim/models/image_sensor.h"
#include "sim/models/module_info.h"
#include "sim/models/ranging.h"
#include "sim/models/real_time_unit.h"
#include "sim/models/sensor_hub.h"
#include "sim/models/system_state.h"

namespace sim {

template <typename Enum>
Choice choice(Enum value, char const* name) {
    return {static_cast<long long>(value), name};
}

// Of hal::imx_te.
std::vector<Choice> imager_choices();

// Each adds the properties of a component, which must outlive the table. `now` answers the device's time.
void describe(Properties& properties, SystemState& system, std::function<Time()> const& now);
void describe(Properties& properties, ModuleInfo& modules);
// With its pins.
void describe(Properties& properties, RealTimeUnit& unit);
void describe(Properties& properties, ImageSensor& sensor);
void describe(Properties& properties, Illumination& light);
void describe(Properties& properties, Autofocus& focus);
void describe(Properties& properties, Ranging& ranging);
// With the orientation that it measures.
void describe(Properties& properties, SensorHub& hub, std::function<Time()> const& now);

}  // namespace sim
