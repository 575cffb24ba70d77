// An image sensor alone.
#include "hal/imx.h"

#include "sim/library/base_impl.h"
#include "sim/library/gate.h"

namespace hal {

using sim::Device;
using sim::gate;
using sim::in;
using sim::Module;
using sim::out;

namespace {

Module module_of(sim::Object const& sensor) {
    return sensor.paths.front() == "/dev/imx567" ? Module::imx567 : Module::imx296;
}

// The sensor behind the object's node, with the frames that it has taken until now.
sim::ImageSensor& sensor(Device& device, sim::Object const& object) {
    device.advance_imaging();
    return module_of(object) == Module::imx567 ? device.imx567 : device.imx296;
}

}  // namespace

int imx_t::get_status(unsigned char& status) const {
    return gate(impl_, "imx_t::get_status", out(status),
                [&](Device& d, auto& s) { return d.modules.get_status(module_of(*impl_), s); });
}

int imx_t::get_revision(revision_t& revision) const {
    return gate(impl_, "imx_t::get_revision", out(revision),
                [&](Device& d, auto& r) { return d.modules.get_revision(module_of(*impl_), r); });
}

int imx_t::get_serial_number(unsigned int& serial_number) const {
    return gate(impl_, "imx_t::get_serial_number", out(serial_number),
                [&](Device& d, auto& n) { return d.modules.get_serial_number(module_of(*impl_), n); });
}

int imx_t::get_sensortype(unsigned int& type) const {
    return gate(impl_, "imx_t::get_sensortype", out(type),
                [&](Device& d, auto& t) { return sensor(d, *impl_).get_variant(t); });
}

int imx_t::get_gain(unsigned int& gain) const {
    return gate(impl_, "imx_t::get_gain", out(gain), [&](Device& d, auto& g) { return sensor(d, *impl_).get_gain(g); });
}

int imx_t::set_gain(unsigned int gain) {
    return gate(impl_, "imx_t::set_gain", in(gain), [&](Device& d) { return sensor(d, *impl_).set_gain(gain); });
}

int imx_t::get_hscanmode(unsigned int& mode) const {
    return gate(impl_, "imx_t::get_hscanmode", out(mode), [&](Device& d, auto& m) {
        roi_te code{};
        int const status = sensor(d, *impl_).get_scan_mode(code);
        m = static_cast<unsigned int>(code);
        return status;
    });
}

int imx_t::set_hscanmode(unsigned int mode) {
    return gate(impl_, "imx_t::set_hscanmode", in(mode),
                [&](Device& d) { return sensor(d, *impl_).set_scan_mode(static_cast<roi_te>(mode)); });
}

int imx_t::get_framecount(unsigned long& count) const {
    return gate(impl_, "imx_t::get_framecount", out(count),
                [&](Device& d, auto& c) { return sensor(d, *impl_).get_frames(c); });
}

int imx_t::set_roi_xyoffset(unsigned int x, unsigned int y) {
    return gate(impl_, "imx_t::set_roi_xyoffset", in(x, y),
                [&](Device& d) { return sensor(d, *impl_).set_roi_offset(x, y); });
}

int imx_t::get_roi_xyoffset(unsigned int& x, unsigned int& y) const {
    return gate(impl_, "imx_t::get_roi_xyoffset", out(x, y),
                [&](Device& d, auto& left, auto& upper) { return sensor(d, *impl_).get_roi_offset(left, upper); });
}

}  // namespace hal
