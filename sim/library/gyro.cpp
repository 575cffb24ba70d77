// The motion sensor hub.
#include "hal/gyro.h"

#include <fstream>
#include <iostream>

#include "sim/library/base_impl.h"
#include "sim/library/call.h"
#include "sim/library/callbacks.h"
#include "sim/library/gyro_impl.h"

namespace sim {

namespace {

// More than any image of the hub's; what is longer is none.
constexpr std::size_t kLongestImage = 1 << 20;  // bytes

struct GyroImpl : BaseAccess::Impl, EventTaker {
    GyroImpl(hal::gyro_t const& owner, char const* firmware_path) : gyro(owner), firmware(to_argument(firmware_path)) {}

    // Serves the callback records from the event's on, up to the first that calls its function; where calls are
    // announced, that record alone. Sensors and functions are looked up for each sample. Whether the others are still
    // to be served then, the device knows: it sends an event for those.
    void take(Event const& event, EventTurn& turn) override {
        constexpr std::uint8_t kRecords = std::extent_v<decltype(gyro.callback_records)>;
        for (std::uint8_t index = event.index; index < kRecords; ++index) {
            auto const [sensor_id, function] = gyro.callback_records[index];
            bool const is_called = function && sensor_id == event.sample.sensor_id;
            if (is_called || turn.announced()) {
                turn.done.next_record = static_cast<std::uint8_t>((index + 1) % kRecords);
            }
            if (is_called) {
                turn.call([&called = function, &event] { call_with(called, event.sample); });
            }
            if (is_called || turn.announced()) {
                return;
            }
        }
    }

    hal::gyro_t const& gyro;
    Text const firmware;
};

// The bytes of an image file where the program has it; nothing where it cannot be read.
Hidden<Text> read_image(Text const& path) {
    std::ifstream file(path.value_or(""), std::ios::binary);
    if (!file) {
        return {};
    }
    // No more memory than it takes: a heap that grows by a mebibyte at once crashes what proot traces.
    std::string bytes;
    char part[4096];
    while (bytes.size() < kLongestImage && (file.read(part, sizeof part), file.gcount() > 0)) {
        bytes.append(part, static_cast<std::size_t>(file.gcount()));
    }
    return {bytes};
}

// Asks for a report and prints it.
template <typename Op, typename Arguments>
int report(Object const* object, Arguments const& arguments) {
    Hidden<std::string> text;
    int const status = call<Op>(object, arguments, out(text));
    int const error = errno;
    std::cout << text.value << std::flush;
    errno = error;
    return status;
}

}  // namespace

ObjectNumber number_of(hal::gyro_t const& gyro) {
    return {BaseAccess::object_of(gyro).number};
}

void call_with(std::function<void(unsigned char, hal::cb_struct_te, void*)> const& function, SampleData const& sample) {
    hal::quaternion_s16_t quaternion = sample.quaternion;
    bool const has_data = sample.kind == hal::cb_struct_te::quaternion_s16;
    function(sample.sensor_id, sample.kind, has_data ? &quaternion : nullptr);
}

}  // namespace sim

namespace hal {

using sim::call;
using sim::GyroImpl;
using sim::in;
using sim::out;
using sim::report;
namespace operations = sim::operations;

gyro_t::gyro_t(char const* device, int access, char const* firmware, char const* irq_value, unsigned short irq_timeout)
    : base_t(new GyroImpl(*this, firmware)) {
    sim::open_lane(sim::Lane::hub);
    sim::construct<operations::gyro_t::constructor>(*impl_, in(device, access, firmware, irq_value, irq_timeout));
    sim::attach(*impl_, static_cast<GyroImpl&>(*impl_));
}

gyro_t::~gyro_t() {
    sim::destroy<operations::gyro_t::destructor>(*impl_);
    sim::detach(*impl_);
    delete impl_;
    impl_ = nullptr;
}

int gyro_t::get_status(unsigned char& status) const {
    return call<operations::gyro_t::get_status>(impl_, out(status));
}

int gyro_t::get_revision(revision_t& revision) const {
    return call<operations::gyro_t::get_revision>(impl_, out(revision));
}

int gyro_t::boot() {
    return call<operations::gyro_t::boot>(impl_, in(sim::read_image(static_cast<GyroImpl&>(*impl_).firmware)));
}

int gyro_t::upload_firmware(char const* path) {
    return call<operations::gyro_t::upload_firmware>(impl_, in(path, sim::read_image(sim::to_argument(path))));
}

int gyro_t::install_callbacks() {
    return call<operations::gyro_t::install_callbacks>(impl_);
}

int gyro_t::activate_vsensor(unsigned int id, float rate, unsigned int latency_ms) {
    return call<operations::gyro_t::activate_vsensor>(impl_, in(id, rate, latency_ms));
}

int gyro_t::irq_callback_hold(bool hold) {
    return call<operations::gyro_t::irq_callback_hold>(impl_, in(hold));
}

int gyro_t::info_firmware() {
    return report<operations::gyro_t::info_firmware>(impl_, in());
}

int gyro_t::info_vsensor_list() {
    return report<operations::gyro_t::info_vsensor_list>(impl_, in());
}

int gyro_t::info_psensor_list() {
    return report<operations::gyro_t::info_psensor_list>(impl_, in());
}

int gyro_t::info_vsensor(int id) {
    return report<operations::gyro_t::info_vsensor>(impl_, in(id));
}

int gyro_t::info_vsensor_cfg(int id) {
    return report<operations::gyro_t::info_vsensor_cfg>(impl_, in(id));
}

int gyro_t::info_psensor(int id) {
    return report<operations::gyro_t::info_psensor>(impl_, in(id));
}

int gyro_t::info_irq() {
    return report<operations::gyro_t::info_irq>(impl_, in());
}

int gyro_t::info_irq_ctrl() {
    return report<operations::gyro_t::info_irq_ctrl>(impl_, in());
}

}  // namespace hal
