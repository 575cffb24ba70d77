// What every module of the device can be asked.
#include "sim/models/refusal.h"
#include "sim/service/handlers.h"

namespace sim {

namespace {

using AnyTarget = CallTarget<ServedObject>;

struct ModuleNode {
    char const* path;
    Module module;
};

ModuleNode const kModuleNodes[] = {
    {"/dev/r47-rtu-driver", Module::rtu},
    {"/dev/r47-illumination-driver", Module::illumination},
    {"/dev/r47-autofocus-driver", Module::autofocus},
    {"/dev/i2c-2", Module::gyro},
    {imx296_facts().node, imx296_facts().module},
    {imx567_facts().node, imx567_facts().module},
};

// The module behind the node of the object, asked by `ask`; refused for a node without one.
template <typename Ask>
int ask_module(ServedObject const& object, Ask ask) {
    for (ModuleNode const& node : kModuleNodes) {
        if (object.paths().front() == node.path) {
            return ask(node.module);
        }
    }
    return refuse(ENOTTY);
}

}  // namespace

int handlers::base_t::constructor(AnyTarget& t, Text const& device, int) {
    return t.construct<ServedObject>(std::vector<Text>{device});
}

int handlers::base_t::destructor(AnyTarget&) {
    return 0;
}

int handlers::base_t::get_status(AnyTarget& t, unsigned char& s) {
    return ask_module(*t.object, [&](Module module) { return t->modules.get_status(module, s); });
}

int handlers::base_t::get_revision(AnyTarget& t, hal::revision_t& r) {
    return ask_module(*t.object, [&](Module module) { return t->modules.get_revision(module, r); });
}

}  // namespace sim
