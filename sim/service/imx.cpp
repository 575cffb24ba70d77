// An image sensor alone.
#include "sim/service/handlers.h"

namespace sim {

namespace {

using AnyTarget = CallTarget<ServedObject>;

// The sensor behind the object's node.
SensorFacts const& facts(AnyTarget const& t) {
    return t.object->paths().front() == imx567_facts().node ? imx567_facts() : imx296_facts();
}

Module module_of(AnyTarget const& t) {
    return facts(t).module;
}

ImageSensor& sensor(AnyTarget& t) {
    return *t->sensor(facts(t).type);
}

}  // namespace

int handlers::imx_t::get_status(AnyTarget& t, unsigned char& s) {
    return t->modules.get_status(module_of(t), s);
}

int handlers::imx_t::get_revision(AnyTarget& t, hal::revision_t& r) {
    return t->modules.get_revision(module_of(t), r);
}

int handlers::imx_t::get_serial_number(AnyTarget& t, unsigned int& n) {
    return t->modules.get_serial_number(module_of(t), n);
}

int handlers::imx_t::get_sensortype(AnyTarget& t, unsigned int& type) {
    return sensor(t).get_variant(type);
}

int handlers::imx_t::get_gain(AnyTarget& t, unsigned int& g) {
    return sensor(t).get_gain(g);
}

int handlers::imx_t::set_gain(AnyTarget& t, unsigned int gain) {
    return sensor(t).set_gain(gain);
}

int handlers::imx_t::get_hscanmode(AnyTarget& t, unsigned int& m) {
    hal::roi_te code{};
    int const status = sensor(t).get_scan_mode(code);
    m = static_cast<unsigned int>(code);
    return status;
}

int handlers::imx_t::set_hscanmode(AnyTarget& t, unsigned int mode) {
    return sensor(t).set_scan_mode(static_cast<hal::roi_te>(mode));
}

int handlers::imx_t::get_framecount(AnyTarget& t, unsigned long& c) {
    return sensor(t).get_frames(c);
}

int handlers::imx_t::set_roi_xyoffset(AnyTarget& t, unsigned int x, unsigned int y) {
    return sensor(t).set_roi_offset(x, y);
}

int handlers::imx_t::get_roi_xyoffset(AnyTarget& t, unsigned int& left, unsigned int& upper) {
    return sensor(t).get_roi_offset(left, upper);
}

}  // namespace sim
