// The verb that puts something in front of the ranging sensor.
#include "sim/control/value_words.h"
#include "sim/control/verbs.h"

namespace sim {

namespace {

char const* const kSceneUsage =
    "scene none\n"
    "scene plane MM [reflectance PERCENT]\n"
    "scene tilted MM YAW [PITCH] [reflectance PERCENT]\n"
    "scene step LEFT_MM RIGHT_MM [reflectance PERCENT]\n"
    "scene hole MM [DEPTH_MM] [reflectance PERCENT]";

Reply scene(Device::Access& device, Words const& words) {
    auto const parsed = parse_scene(words);
    if (!parsed) {
        return usage_error(kSceneUsage);
    }
    device->ranging.set_scene(*parsed);
    return Reply::done();
}

}  // namespace

void add_ranging_verbs(Commands& commands) {
    commands.add({"scene",
                  kSceneUsage,
                  "what lies in front of the ranging sensor, 50 percent reflecting unless told",
                  scene,
                  {},
                  false,
                  "Distances above 0 to 10000 mm along the axis, angles to 60 degrees, percent 1 to 100.\nExample: "
                  "scene tilted 800 20 reflectance 30"});
}

}  // namespace sim
