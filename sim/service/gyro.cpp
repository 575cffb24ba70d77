// The motion sensor hub, and those who listen to it.
#include "sim/models/refusal.h"
#include "sim/service/handlers.h"

namespace sim {

namespace {

using GyroTarget = CallTarget<GyroObject>;
using AlarmTarget = CallTarget<AlarmObject>;
using DelegateTarget = CallTarget<DelegateObject>;

// The time of an upload; refused where the hub, or its power, has gone meanwhile.
int take_upload(GyroTarget& t, Text const& image) {
    int const gone = t.take_time(image ? t->hub.upload_time() : Duration(0));
    return gone == 0 ? 0 : refuse(gone);
}

// Constructs somebody who listens through a gyro_t of the same program.
template <typename Listener, typename... Argument>
int construct_through(CallTarget<Listener>& t, ObjectNumber gyro, Argument... arguments) {
    auto* const through = dynamic_cast<GyroObject*>(t.call.program.object(gyro.number).get());
    if (through == nullptr) {
        t.constructed = nullptr;
        return EBADF;
    }
    return t.template construct<Listener>(*through, arguments...);
}

}  // namespace

int handlers::gyro_t::constructor(GyroTarget& t, Text const& bus, int, Text const&, Text const& irq_value,
                                  unsigned short) {
    return t.construct<GyroObject>(bus, irq_value);
}

int handlers::gyro_t::destructor(GyroTarget& t) {
    t.call.silence_all(*t.object);
    return 0;
}

int handlers::gyro_t::get_status(GyroTarget& t, unsigned char& s) {
    return t->modules.get_status(Module::gyro, s);
}

int handlers::gyro_t::get_revision(GyroTarget& t, hal::revision_t& r) {
    return t->modules.get_revision(Module::gyro, r);
}

// The hub takes its firmware from the bytes of the image, which the program has read where it is.
int handlers::gyro_t::boot(GyroTarget& t, Hidden<Text> const& image) {
    t->hub.reset();
    if (!t.object->irq_value() || !t->nodes.present(*t.object->irq_value())) {
        return refuse(ENOENT);
    }
    int const status = take_upload(t, image.value);
    return status == 0 ? t->hub.boot(image.value) : status;
}

int handlers::gyro_t::upload_firmware(GyroTarget& t, Text const&, Hidden<Text> const& image) {
    int const status = take_upload(t, image.value);
    return status == 0 ? t->hub.upload(image.value) : status;
}

int handlers::gyro_t::install_callbacks(GyroTarget& t) {
    return t.object->install_callbacks();
}

int handlers::gyro_t::activate_vsensor(GyroTarget& t, unsigned int id, float rate, unsigned int latency_ms) {
    return t->hub.activate(id, rate, latency_ms, t.now());
}

int handlers::gyro_t::irq_callback_hold(GyroTarget& t, bool hold) {
    if (hold) {
        t.call.silence_all(*t.object);
    } else {
        t.object->hold(false);
    }
    return 0;
}

int handlers::gyro_t::info_firmware(GyroTarget& t, Hidden<std::string>& report) {
    return t->hub.report_firmware(report.value);
}

int handlers::gyro_t::info_vsensor_list(GyroTarget& t, Hidden<std::string>& report) {
    return t->hub.report_virtual_sensors(report.value);
}

int handlers::gyro_t::info_psensor_list(GyroTarget& t, Hidden<std::string>& report) {
    return t->hub.report_physical_sensors(report.value);
}

int handlers::gyro_t::info_vsensor(GyroTarget& t, int id, Hidden<std::string>& report) {
    return t->hub.report_virtual_sensor(id, report.value);
}

int handlers::gyro_t::info_vsensor_cfg(GyroTarget& t, int id, Hidden<std::string>& report) {
    return t->hub.report_configuration(id, report.value);
}

int handlers::gyro_t::info_psensor(GyroTarget& t, int id, Hidden<std::string>& report) {
    return t->hub.report_physical_sensor(id, report.value);
}

int handlers::gyro_t::info_irq(GyroTarget& t, Hidden<std::string>& report) {
    return t->hub.report_interrupt(report.value);
}

int handlers::gyro_t::info_irq_ctrl(GyroTarget& t, Hidden<std::string>& report) {
    return t->hub.report_interrupt_control(report.value);
}

int handlers::gyro_alarm_t::constructor(AlarmTarget& t, ObjectNumber const& gyro, unsigned short sensor_id) {
    return construct_through<AlarmObject>(t, gyro, sensor_id);
}

int handlers::gyro_alarm_t::destructor(AlarmTarget& t) {
    t.object->mute();
    t.call.silence(*t.object);
    return 0;
}

int handlers::gyro_alarm_t::set_angle_limit(AlarmTarget& t, float degrees) {
    return t.object->set_angle_limit(degrees);
}

int handlers::gyro_alarm_t::teach_current_position(AlarmTarget& t) {
    return t.object->teach();
}

int handlers::gyro_delegate_t::constructor(DelegateTarget& t, ObjectNumber const& gyro, int sensor_id,
                                           FunctionGiven const& function) {
    return construct_through<DelegateObject>(t, gyro, sensor_id, function.given);
}

int handlers::gyro_delegate_t::destructor(DelegateTarget& t) {
    t.object->mute();
    t.call.silence(*t.object);
    return 0;
}

}  // namespace sim
