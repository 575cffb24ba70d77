// An image sensor alone.
#include "hal/imx.h"

#include "sim/library/base_impl.h"
#include "sim/library/call.h"

namespace hal {

using sim::call;
using sim::in;
using sim::out;
namespace operations = sim::operations;

int imx_t::get_status(unsigned char& status) const {
    return call<operations::imx_t::get_status>(impl_, out(status));
}

int imx_t::get_revision(revision_t& revision) const {
    return call<operations::imx_t::get_revision>(impl_, out(revision));
}

int imx_t::get_serial_number(unsigned int& serial_number) const {
    return call<operations::imx_t::get_serial_number>(impl_, out(serial_number));
}

int imx_t::get_sensortype(unsigned int& type) const {
    return call<operations::imx_t::get_sensortype>(impl_, out(type));
}

int imx_t::get_gain(unsigned int& gain) const {
    return call<operations::imx_t::get_gain>(impl_, out(gain));
}

int imx_t::set_gain(unsigned int gain) {
    return call<operations::imx_t::set_gain>(impl_, in(gain));
}

int imx_t::get_hscanmode(unsigned int& mode) const {
    return call<operations::imx_t::get_hscanmode>(impl_, out(mode));
}

int imx_t::set_hscanmode(unsigned int mode) {
    return call<operations::imx_t::set_hscanmode>(impl_, in(mode));
}

int imx_t::get_framecount(unsigned long& count) const {
    return call<operations::imx_t::get_framecount>(impl_, out(count));
}

int imx_t::set_roi_xyoffset(unsigned int x, unsigned int y) {
    return call<operations::imx_t::set_roi_xyoffset>(impl_, in(x, y));
}

int imx_t::get_roi_xyoffset(unsigned int& x, unsigned int& y) const {
    return call<operations::imx_t::get_roi_xyoffset>(impl_, out(x, y));
}

}  // namespace hal
