// The objects that programs have on the device.
#include "sim/service/objects.h"

#include <algorithm>
#include <cerrno>
#include <type_traits>

#include "hal/gyro.h"
#include "sim/calls/callback_names.h"
#include "sim/calls/text.h"
#include "sim/models/refusal.h"
#include "sim/service/program.h"

namespace sim {

namespace {

// The node of a sensor; none for a code that is no sensor.
Text sensor_node(hal::imx_te type) {
    SensorFacts const* const sensor = find_image_sensor(type);
    return sensor != nullptr ? Text(sensor->node) : std::nullopt;
}

template <std::size_t N>
void copy_records(ButtonRecord const (&from)[N], ButtonEvents::Records& to) {
    static_assert(N == ButtonEvents::kRecords);
    for (std::size_t i = 0; i < N; ++i) {
        to[i] = {std::chrono::milliseconds(from[i].hold_time_ms), from[i].has_action};
    }
}

// Posts what a full lane takes no more of as lost.
void post(Components& device, EventLane& lane, Occurrence const& occurrence) {
    if (!lane.post(occurrence)) {
        Record record;
        record.kind = RecordKind::lost;
        record.start = device.now;
        record.program = occurrence.object->program().name();
        record.object = occurrence.object->number();
        record.text = "an event: the program does not keep up";
        device.journal.write(record);
    }
}

}  // namespace

std::string Callback::text() const {
    std::string list;
    for (std::string const& argument : arguments) {
        list += (list.empty() ? "" : ", ") + argument;
    }
    return std::string(name) + "(" + list + ")";
}

ServedObject::ServedObject(Components& device, Program& program, std::vector<Text> const& paths)
    : device_(device), program_(program), paths_(paths) {
    open_error_ = has_nodes() ? 0 : ENOENT;
}

bool ServedObject::has_nodes() const {
    return std::all_of(paths_.begin(), paths_.end(),
                       [&](Text const& path) { return path && device_.nodes.present(*path); });
}

int ServedObject::check() const {
    if (open_error_ != 0) {
        return open_error_;
    }
    if (!has_nodes()) {
        return ENODEV;
    }
    return device_.powered() ? 0 : EIO;
}

void ServedObject::leave() {
    if (EventLane* const callbacks = lane()) {
        callbacks->drop(*this);
    }
    fail_opening(EBADF);
}

CameraObject::CameraObject(Components& device, Program& program, hal::imx_te sensor_type, Text const& sensor,
                           Text const& rtu)
    : ServedObject(device, program, {sensor ? sensor : sensor_node(sensor_type), rtu}), type(sensor_type) {
    if (!sensor_node(type)) {
        fail_opening(ENODEV);  // no sensor, whatever device was given
    }
}

// Its acquisition ends with it.
void CameraObject::leave() {
    device_.rtu.set_acquiring(number(), false);
    ServedObject::leave();
}

GyroListener::GyroListener(Components& device, Program& program, GyroObject& gyro)
    : ServedObject(device, program, gyro.paths()), gyro_(gyro.number()) {
    gyro.add(*this);
}

void GyroListener::leave() {
    if (GyroObject* const served = gyro()) {
        served->remove(*this);
    }
    ServedObject::leave();
}

EventLane* GyroListener::lane() {
    return &program().hub_lane;
}

GyroObject* GyroListener::gyro() const {
    return dynamic_cast<GyroObject*>(program().object(gyro_).get());
}

GyroObject::GyroObject(Components& device, Program& program, Text const& bus, Text const& irq_value)
    : ServedObject(device, program, {bus}), irq_value_(irq_value) {
    device_.samples.add(*this);
}

void GyroObject::leave() {
    device_.samples.remove(*this);
    listeners_.clear();
    if (callbacks_installed_) {
        device_.hub.remove_callbacks();
    }
    ServedObject::leave();
}

int GyroObject::install_callbacks() {
    if (callbacks_installed_) {
        return device_.hub.running() ? 0 : refuse(EIO);
    }
    int const status = device_.hub.install_callbacks();
    callbacks_installed_ = status == 0;
    return status;
}

void GyroObject::hold(bool held) {
    held_ = held;
    released_ = released_ || !held;
    if (held) {
        program().hub_lane.forget(*this);
        for (GyroListener const* const listener : listeners_) {
            program().hub_lane.forget(*listener);
        }
    }
}

void GyroObject::remove(GyroListener& listener) {
    listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), &listener), listeners_.end());
}

bool GyroObject::has(ServedObject const& listener) const {
    return std::find(listeners_.begin(), listeners_.end(), &listener) != listeners_.end();
}

bool GyroObject::listens() const {
    return !held_;  // it reads the hub, whoever waits for what it finds
}

// The records first, as they are part of the object, then the others in the order of their construction.
bool GyroObject::take(SensorHub::Sample const& sample) {
    if (held_ || check() != 0) {
        return false;
    }
    if (serves_records()) {
        post(device_, program().hub_lane, {this, EventKind::sample_for_records, 0, sample});
    }
    for (GyroListener* const listener : listeners_) {
        if (!listener->muted()) {
            listener->hear(sample);
        }
    }
    return true;
}

bool GyroObject::prepare(Occurrence const& occurrence, Event& event) {
    event.sample = {occurrence.sample.sensor_id, occurrence.sample.kind, occurrence.sample.quaternion};
    return !held_;
}

EventLane* GyroObject::lane() {
    return &program().hub_lane;
}

Callback GyroObject::callback(Occurrence const& occurrence) const {
    return {callbacks::kGyroRecord.name, texts_of(occurrence.index, occurrence.sample.sensor_id)};
}

DelegateObject::DelegateObject(Components& device, Program& program, GyroObject& gyro, int sensor_id, bool has_function)
    : GyroListener(device, program, gyro), sensor_id_(sensor_id), has_function_(has_function) {}

void DelegateObject::hear(SensorHub::Sample const& sample) {
    if (has_function_ && sample.sensor_id == sensor_id_) {
        post(device_, program().hub_lane, {this, EventKind::sample_for_delegate, 0, sample});
    }
}

bool DelegateObject::prepare(Occurrence const& occurrence, Event& event) {
    event.sample = {occurrence.sample.sensor_id, occurrence.sample.kind, occurrence.sample.quaternion};
    return true;
}

Callback DelegateObject::callback(Occurrence const&) const {
    return {callbacks::kDelegate.name, texts_of(sensor_id_)};
}

AlarmObject::AlarmObject(Components& device, Program& program, GyroObject& gyro, unsigned short sensor_id)
    : GyroListener(device, program, gyro), sensor_id_(sensor_id) {}

int AlarmObject::set_angle_limit(float degrees) {
    return alarm_.set_angle_limit(degrees) ? 0 : refuse(EINVAL);
}

int AlarmObject::teach() {
    hal::quaternion_s16_t position{};
    int const status = device_.hub.measure(sensor_id_, device_.now, position);
    if (status == 0) {
        alarm_.teach(rotation_of(position));
    }
    return status;
}

void AlarmObject::hear(SensorHub::Sample const& sample) {
    bool const judged = sample.sensor_id == sensor_id_ && sample.kind == hal::cb_struct_te::quaternion_s16;
    GyroObject const* const through = gyro();
    if (judged && through != nullptr && through->released()) {
        post(device_, program().hub_lane, {this, EventKind::position_reached, 0, sample});
    }
}

// Judged when its turn comes: a program that is slow to take one transition sees the position that is judged then.
bool AlarmObject::prepare(Occurrence const& occurrence, Event& event) {
    auto const transition = alarm_.judge(rotation_of(occurrence.sample.quaternion));
    if (!transition) {
        return false;
    }
    event.kind = *transition == TiltAlarm::Transition::reached ? EventKind::position_reached : EventKind::position_left;
    return true;
}

Callback AlarmObject::callback(Occurrence const& occurrence) const {
    bool const reached = occurrence.kind == EventKind::position_reached;
    return {reached ? callbacks::kPositionReached.name : callbacks::kPositionLeft.name};
}

ButtonObject::ButtonObject(Components& device, Program& program, Text const& chip, long line, Duration debounce)
    : ServedObject(device, program, {chip}),
      line_(line),
      interruptions_(interruptions()),
      debounce_(debounce),
      events_(debounce),
      self_(std::make_shared<ButtonObject*>(this)) {
    device_.presses.add(*this);
}

void ButtonObject::leave() {
    device_.presses.remove(*this);
    self_.reset();
    ServedObject::leave();
}

bool ButtonObject::sees_button() const {
    return check() == 0 && line_ == button_line(device_.nodes);
}

void ButtonObject::hold(bool held) {
    held_ = held;
    look();
}

void ButtonObject::contact_moved(Time when, bool closes, Duration lasts) {
    lose_what_was_not_seen();
    if (sees_button() && debounce_.passes(closes, lasts) && edges_.size() < kLongestQueue) {
        edges_.push_back({when, closes});
        look();
    }
}

// How often the chip or the power went.
unsigned long ButtonObject::interruptions() const {
    Text const& chip = paths().front();
    return device_.power_changes() + (chip ? device_.nodes.removals(*chip) : 0);
}

// A press of which the object missed a part, however short that was.
void ButtonObject::lose_what_was_not_seen() {
    bool const interrupted = interruptions() != interruptions_;
    interruptions_ = interruptions();
    if (!interrupted && sees_button()) {
        return;
    }
    debounce_.reset();
    edges_.clear();
    events_.reset();
    ready_.clear();
}

// Has the lane look for what there is to tell, as often as there may be something.
void ButtonObject::look() {
    program().button_lane.forget(*this);
    program().button_lane.post({this, EventKind::contact_moved, 0, {}});
}

// First the edges, which ask for the records that hold for them; then what came of them.
bool ButtonObject::prepare(Occurrence const&, Event& event) {
    lose_what_was_not_seen();
    if (held_) {
        return false;
    }
    if (!edges_.empty()) {
        event.kind = EventKind::contact_moved;
        return true;
    }
    queue(events_.advance(device_.now));
    if (ready_.empty()) {
        if (auto const due = events_.next_due()) {
            device_.timeline.at(*due, [&device = program().device(), self = std::weak_ptr<ButtonObject*>(self_)] {
                auto const access = device.access();
                if (auto const object = self.lock()) {
                    (*object)->look();
                }
            });
        }
        return false;
    }
    event.kind = ready_.front().press ? EventKind::press_record : EventKind::release_record;
    event.index = static_cast<std::uint8_t>(ready_.front().index);
    ready_.pop_front();
    return true;
}

void ButtonObject::told(Occurrence const& occurrence, Done const& done) {
    if (occurrence.kind == EventKind::contact_moved && !edges_.empty()) {
        Edge const edge = edges_.front();
        edges_.pop_front();
        ButtonEvents::Records records;
        copy_records(edge.closes ? done.records.press : done.records.release, records);
        if (edge.closes) {
            events_.press(edge.time, records);
        } else {
            queue(events_.release(edge.time, records));
        }
    }
    look();
}

EventLane* ButtonObject::lane() {
    return &program().button_lane;
}

Callback ButtonObject::callback(Occurrence const& occurrence) const {
    bool const press = occurrence.kind == EventKind::press_record;
    return {press ? callbacks::kPressRecord.name : callbacks::kReleaseRecord.name, texts_of(occurrence.index)};
}

void ButtonObject::queue(std::vector<ButtonEvents::Event> const& events) {
    ready_.insert(ready_.end(), events.begin(), events.end());
}

}  // namespace sim
