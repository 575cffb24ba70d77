// The second library: what every module has, and the system state.
#include <string_view>

#include "hal/base.h"
#include "hal/system.h"
#include "tests/second_library/second_library.h"

namespace hal {

using second_library::answer;
using second_library::born;
using second_library::dies;
using second_library::mark_image_sensor;

base_t::base_t(char const* device, int) : impl_(nullptr) {
    born(this);
    if (std::string_view(device).rfind("/dev/imx", 0) == 0) {
        mark_image_sensor(*this);
    }
}

base_t::~base_t() {
    dies(this);
}

int base_t::get_status(unsigned char& status) const {
    return answer(this, status);
}

int base_t::get_revision(revision_t& revision) const {
    return answer(this, revision);
}

system_t::system_t(char const*, int) : impl_(nullptr) {
    born(this);
}

system_t::~system_t() {
    dies(this);
}

int system_t::get_device_status(device_state_te& state) const {
    return answer(this, state);
}

int system_t::set_device_status(device_state_te) {
    return answer(this);
}

int system_t::trigger_heartbeat() const {
    return answer(this);
}

}  // namespace hal
