// What every module of the device can be asked.
#include "hal/base.h"

#include <algorithm>
#include <array>

#include "sim/library/base_impl.h"
#include "sim/library/gate.h"

namespace sim {

namespace {

// A member of base_t that only its derived classes may name.
struct BaseAccess : hal::base_t {
    static Object& object_of(hal::base_t const& object) { return *(object.*(&BaseAccess::impl_)); }
};

}  // namespace

Object& object_of(hal::base_t const& object) {
    return BaseAccess::object_of(object);
}

ObjectNumber number_of(hal::base_t const& object) {
    return {object_of(object).number};
}

std::vector<char const*> paths_of(hal::base_t const& object) {
    std::vector<char const*> paths;
    for (std::string const& path : object_of(object).paths) {
        paths.push_back(path.c_str());
    }
    return paths;
}

}  // namespace sim

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::Module;
using sim::out;

namespace {

struct ModuleNode {
    char const* path;
    Module module;
    bool has_constructor;  // the class of its objects has one of its own in the library
};

constexpr std::array<ModuleNode, sim::kModules> kModuleNodes{{
    {"/dev/r47-rtu-driver", Module::rtu, true},
    {"/dev/r47-illumination-driver", Module::illumination, false},
    {"/dev/r47-autofocus-driver", Module::autofocus, false},
    {"/dev/i2c-2", Module::gyro, true},
    {"/dev/imx296", Module::imx296, false},
    {"/dev/imx567", Module::imx567, false},
}};

// The node of `object`, null where no module is behind it.
ModuleNode const* node_of(sim::Object const& object) {
    auto const found = std::find_if(kModuleNodes.begin(), kModuleNodes.end(),
                                    [&](ModuleNode const& node) { return object.paths.front() == node.path; });
    return found != kModuleNodes.end() ? &*found : nullptr;
}

// The module behind the node of `object`, asked by `ask`; refused for a node without one.
template <typename Ask>
int ask_module(sim::Object const& object, Ask ask) {
    ModuleNode const* const node = node_of(object);
    if (node == nullptr) {
        errno = ENOTTY;
        return -1;
    }
    return ask(node->module);
}

}  // namespace

base_t::base_t(char const* device, int access) : impl_(new impl({device})) {
    impl_->construction = in(device, access).text();
    ModuleNode const* const node = node_of(*impl_);
    if (node != nullptr && !node->has_constructor) {
        construct(*impl_, "base_t::base_t", impl_->construction);
    }
}

base_t::~base_t() {
    if (!impl_->dismissed) {
        destroy(*impl_, "base_t::~base_t");
    }
    delete impl_;
}

int base_t::get_status(unsigned char& status) const {
    return gate(impl_, "base_t::get_status", out(status), [&](Device& d, auto& s) {
        return ask_module(*impl_, [&](Module module) { return d.modules.get_status(module, s); });
    });
}

int base_t::get_revision(revision_t& revision) const {
    return gate(impl_, "base_t::get_revision", out(revision), [&](Device& d, auto& r) {
        return ask_module(*impl_, [&](Module module) { return d.modules.get_revision(module, r); });
    });
}

}  // namespace hal
