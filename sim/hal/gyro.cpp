// The motion sensor hub.
#include "hal/gyro.h"

#include "sim/hal/base_impl.h"
#include "sim/hal/gate.h"

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::gate;
using sim::in;
using sim::Module;
using sim::no_model;
using sim::out;

gyro_t::gyro_t(char const* device, int access, char const* firmware, char const* irq_value, unsigned short irq_timeout)
    : base_t(device, access) {
    construct(*impl_, "gyro_t::gyro_t", in(device, access, firmware, irq_value, irq_timeout));
}

gyro_t::~gyro_t() {
    destroy(*impl_, "gyro_t::~gyro_t");
}

int gyro_t::get_status(unsigned char& status) const {
    return gate(impl_, "gyro_t::get_status", out(status),
                [](Device& d, auto& s) { return d.modules.get_status(Module::gyro, s); });
}

int gyro_t::get_revision(revision_t& revision) const {
    return gate(impl_, "gyro_t::get_revision", out(revision),
                [](Device& d, auto& r) { return d.modules.get_revision(Module::gyro, r); });
}

int gyro_t::boot() {
    return gate(impl_, "gyro_t::boot", [](Device&) { return no_model(); });
}

int gyro_t::upload_firmware(char const* path) {
    return gate(impl_, "gyro_t::upload_firmware", in(path), [](Device&) { return no_model(); });
}

int gyro_t::install_callbacks() {
    return gate(impl_, "gyro_t::install_callbacks", [](Device&) { return no_model(); });
}

int gyro_t::activate_vsensor(unsigned int id, float rate, unsigned int latency_ms) {
    return gate(impl_, "gyro_t::activate_vsensor", in(id, rate, latency_ms), [](Device&) { return no_model(); });
}

int gyro_t::irq_callback_hold(bool hold) {
    return gate(impl_, "gyro_t::irq_callback_hold", in(hold), [](Device&) { return no_model(); });
}

int gyro_t::info_firmware() {
    return gate(impl_, "gyro_t::info_firmware", [](Device&) { return no_model(); });
}

int gyro_t::info_vsensor_list() {
    return gate(impl_, "gyro_t::info_vsensor_list", [](Device&) { return no_model(); });
}

int gyro_t::info_psensor_list() {
    return gate(impl_, "gyro_t::info_psensor_list", [](Device&) { return no_model(); });
}

int gyro_t::info_vsensor(int id) {
    return gate(impl_, "gyro_t::info_vsensor", in(id), [](Device&) { return no_model(); });
}

int gyro_t::info_vsensor_cfg(int id) {
    return gate(impl_, "gyro_t::info_vsensor_cfg", in(id), [](Device&) { return no_model(); });
}

int gyro_t::info_psensor(int id) {
    return gate(impl_, "gyro_t::info_psensor", in(id), [](Device&) { return no_model(); });
}

int gyro_t::info_irq() {
    return gate(impl_, "gyro_t::info_irq", [](Device&) { return no_model(); });
}

int gyro_t::info_irq_ctrl() {
    return gate(impl_, "gyro_t::info_irq_ctrl", [](Device&) { return no_model(); });
}

}  // namespace hal
