// The motion sensor hub.
#include "hal/gyro.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

#include "sim/library/base_impl.h"
#include "sim/library/gate.h"
#include "sim/library/gyro_impl.h"
#include "sim/library/subscribe.h"
#include "sim/models/refusal.h"

namespace sim {

namespace {

GyroExtra& extra_of(Object const& object) {
    return static_cast<GyroExtra&>(*object.extra);
}

std::optional<std::string> read_file(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

int boot(Device& device, GyroExtra const& gyro) {
    auto const image = read_file(gyro.firmware);
    device.hub.reset();
    device.samples.schedule();
    if (!device.nodes.present(gyro.irq_value)) {
        return refuse(ENOENT);
    }
    if (image) {
        device.take_time(device.hub.upload_time());
    }
    int const status = device.hub.boot(image);
    device.samples.schedule();
    return status;
}

int upload(Device& device, char const* path) {
    auto const image = read_file(path != nullptr ? path : "");
    if (image) {
        device.take_time(device.hub.upload_time());
    }
    int const status = device.hub.upload(image);
    device.samples.schedule();
    return status;
}

int activate(Device& device, unsigned int id, float rate, unsigned int latency_ms) {
    int const status = device.hub.activate(id, rate, latency_ms, device.now());
    device.samples.schedule();
    return status;
}

// Serves one callback record: its sensor and function are looked up for each sample.
void serve(hal::gyro_t const& gyro, std::size_t record, int object, SensorHub::Sample const& sample) {
    bool installed;
    {
        Device& device = Device::instance();
        auto const lock = device.lock();
        installed = device.hub.callbacks_installed();
    }
    auto const [sensor_id, function] = gyro.callback_records[record];
    if (installed && function && sensor_id == sample.sensor_id) {
        journal_callback(object, "gyro_t::callback_records", in(record, sample.sensor_id));
        call(function, sample);
    }
}

// Passes a report, which `fill` writes to its second argument, and prints it.
template <typename Arguments, typename Fill>
int report(Object* object, char const* operation, Arguments const& arguments, Fill fill) {
    std::string text;
    int const status = gate(object, operation, arguments, [&](Device& d) { return fill(d.hub, text); });
    int const error = errno;
    std::cout << text << std::flush;
    errno = error;
    return status;
}

}  // namespace

std::shared_ptr<SampleFeed> feed_of(hal::gyro_t const& gyro) {
    return extra_of(object_of(gyro)).feed;
}

void call(std::function<void(unsigned char, hal::cb_struct_te, void*)> const& function,
          SampleFeed::Sample const& sample) {
    hal::quaternion_s16_t quaternion = sample.quaternion;
    bool const has_data = sample.kind == hal::cb_struct_te::quaternion_s16;
    function(sample.sensor_id, sample.kind, has_data ? &quaternion : nullptr);
}

}  // namespace sim

namespace hal {

using sim::construct;
using sim::destroy;
using sim::Device;
using sim::extra_of;
using sim::gate;
using sim::in;
using sim::Module;
using sim::out;
using sim::report;

gyro_t::gyro_t(char const* device, int access, char const* firmware, char const* irq_value, unsigned short irq_timeout)
    : base_t(device, access) {
    auto extra = std::make_unique<sim::GyroExtra>();
    extra->firmware = firmware != nullptr ? firmware : "";
    extra->irq_value = irq_value != nullptr ? irq_value : "";
    extra->feed =
        std::make_shared<sim::SampleFeed>(sim::subscribe(false), [object = impl_] { return object->ready(); });
    for (std::size_t i = 0; i < std::size(callback_records); ++i) {
        extra->feed->listen(
            sim::SampleFeed::From::first_release,
            [this, i, object = impl_->number](auto const& sample) { sim::serve(*this, i, object, sample); });
    }
    impl_->extra = std::move(extra);
    construct(*impl_, "gyro_t::gyro_t", in(device, access, firmware, irq_value, irq_timeout));
    auto const lock = Device::instance().lock();
    Device::instance().samples.add(sim::feed_of(*this));
}

gyro_t::~gyro_t() {
    auto const feed = sim::feed_of(*this);
    feed->close();
    {
        auto const lock = Device::instance().lock();
        Device::instance().samples.remove(feed);
    }
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
    return gate(impl_, "gyro_t::boot", [&](Device& d) { return sim::boot(d, extra_of(*impl_)); });
}

int gyro_t::upload_firmware(char const* path) {
    return gate(impl_, "gyro_t::upload_firmware", in(path), [&](Device& d) { return sim::upload(d, path); });
}

int gyro_t::install_callbacks() {
    return gate(impl_, "gyro_t::install_callbacks", [](Device& d) { return d.hub.install_callbacks(); });
}

int gyro_t::activate_vsensor(unsigned int id, float rate, unsigned int latency_ms) {
    return gate(impl_, "gyro_t::activate_vsensor", in(id, rate, latency_ms),
                [&](Device& d) { return sim::activate(d, id, rate, latency_ms); });
}

int gyro_t::irq_callback_hold(bool hold) {
    return gate(impl_, "gyro_t::irq_callback_hold", in(hold), [&](Device& d) {
        d.unlocked([&] { sim::feed_of(*this)->hold(hold); });
        return 0;
    });
}

int gyro_t::info_firmware() {
    return report(impl_, "gyro_t::info_firmware", in(),
                  [](auto const& hub, auto& text) { return hub.report_firmware(text); });
}

int gyro_t::info_vsensor_list() {
    return report(impl_, "gyro_t::info_vsensor_list", in(),
                  [](auto const& hub, auto& text) { return hub.report_virtual_sensors(text); });
}

int gyro_t::info_psensor_list() {
    return report(impl_, "gyro_t::info_psensor_list", in(),
                  [](auto const& hub, auto& text) { return hub.report_physical_sensors(text); });
}

int gyro_t::info_vsensor(int id) {
    return report(impl_, "gyro_t::info_vsensor", in(id),
                  [&](auto const& hub, auto& text) { return hub.report_virtual_sensor(id, text); });
}

int gyro_t::info_vsensor_cfg(int id) {
    return report(impl_, "gyro_t::info_vsensor_cfg", in(id),
                  [&](auto const& hub, auto& text) { return hub.report_configuration(id, text); });
}

int gyro_t::info_psensor(int id) {
    return report(impl_, "gyro_t::info_psensor", in(id),
                  [&](auto const& hub, auto& text) { return hub.report_physical_sensor(id, text); });
}

int gyro_t::info_irq() {
    return report(impl_, "gyro_t::info_irq", in(), [](auto& hub, auto& text) { return hub.report_interrupt(text); });
}

int gyro_t::info_irq_ctrl() {
    return report(impl_, "gyro_t::info_irq_ctrl", in(),
                  [](auto const& hub, auto& text) { return hub.report_interrupt_control(text); });
}

}  // namespace hal
