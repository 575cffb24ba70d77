// The objects that programs have on the device.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sim/device/device.h"
#include "sim/models/tilt_alarm.h"
#include "sim/service/event_lane.h"

namespace sim {

class GyroObject;
class Program;

// A function of a program that an event calls, as the journal has it.
struct Callback {
    std::string_view name;
    std::vector<std::string> arguments{};

    std::string text() const;
};

// All is called with the device's lock held.
class ServedObject {
public:
    // An object on the nodes `paths`, which must all be there at construction and at each operation. A null or
    // empty path is never there.
    ServedObject(Components& device, Program& program, std::vector<Text> const& paths);
    ServedObject(ServedObject const&) = delete;
    ServedObject& operator=(ServedObject const&) = delete;
    virtual ~ServedObject() = default;

    unsigned int number() const { return number_; }
    void set_number(unsigned int number) { number_ = number; }
    Program& program() const { return program_; }
    std::vector<Text> const& paths() const { return paths_; }
    // errno of the construction; 0: opened.
    int open_error() const { return open_error_; }
    void fail_opening(int error) { open_error_ = error; }
    // 0, or the errno for which it cannot be used now.
    int check() const;

    // What the program has to be told of the occurrence; false: nothing, it is over.
    virtual bool prepare(Occurrence const&, Event&) { return false; }
    // The program has been told.
    virtual void told(Occurrence const&, Done const&) {}
    // The lane of its callbacks; null where it has none.
    virtual EventLane* lane() { return nullptr; }
    // Whether the device has something to do with each callback before it is called: a record, or a fault rule. A
    // program that nobody watches is spared the announcement, half of a callback's time.
    bool is_watched() const { return device_.journal.on() || !device_.faults.none(); }
    // The function that an event calls.
    virtual Callback callback(Occurrence const&) const { return {}; }
    // The program has it no more: takes it out of all that tells it something. A call that is on its way may still have
    // it, and is refused.
    virtual void leave();

protected:
    Components& device_;

private:
    bool has_nodes() const;

    Program& program_;
    std::vector<Text> const paths_;
    unsigned int number_ = 0;
    int open_error_ = 0;
};

class CameraObject : public ServedObject {
public:
    CameraObject(Components& device, Program& program, hal::imx_te type, Text const& sensor, Text const& rtu);

    void leave() override;

    hal::imx_te const type;
};

// Somebody who listens to the sensor hub through a gyro_t.
class GyroListener : public ServedObject {
public:
    GyroListener(Components& device, Program& program, GyroObject& gyro);

    // A sample that the gyro_t lets through.
    virtual void hear(SensorHub::Sample const& sample) = 0;
    // It hears nothing from now on: what would come while its end waits for its callback would make that wait on.
    void mute() { muted_ = true; }
    bool muted() const { return muted_ || open_error() != 0; }
    EventLane* lane() override;
    void leave() override;

protected:
    // The gyro_t; null once it has gone, though it should not go first.
    GyroObject* gyro() const;

private:
    unsigned int const gyro_;  // its number
    bool muted_ = false;
};

// A gyro_t and those who listen through it.
class GyroObject : public ServedObject, SampleListener {
public:
    GyroObject(Components& device, Program& program, Text const& bus, Text const& irq_value);

    // The delivery of samples; not held at first.
    void hold(bool held);
    bool held() const { return held_; }
    // Whether there was a hold(false).
    bool released() const { return released_; }
    Text const& irq_value() const { return irq_value_; }

    void add(GyroListener& listener) { listeners_.push_back(&listener); }
    void remove(GyroListener& listener);
    bool has(ServedObject const& listener) const;

    // The callback records, from now on until the object goes. 0, or -1 with errno.
    int install_callbacks();

    bool take(SensorHub::Sample const& sample) override;
    bool listens() const override;
    bool prepare(Occurrence const& occurrence, Event& event) override;
    EventLane* lane() override;
    Callback callback(Occurrence const& occurrence) const override;
    void leave() override;

private:
    bool serves_records() const { return released_ && callbacks_installed_; }

    Text const irq_value_;
    std::vector<GyroListener*> listeners_;
    bool held_ = false;
    bool released_ = false;
    bool callbacks_installed_ = false;
};

class DelegateObject : public GyroListener {
public:
    DelegateObject(Components& device, Program& program, GyroObject& gyro, int sensor_id, bool has_function);

    void hear(SensorHub::Sample const& sample) override;
    bool prepare(Occurrence const& occurrence, Event& event) override;
    Callback callback(Occurrence const& occurrence) const override;

private:
    int const sensor_id_;
    bool const has_function_;
};

class AlarmObject : public GyroListener {
public:
    AlarmObject(Components& device, Program& program, GyroObject& gyro, unsigned short sensor_id);

    // These answer 0 or -1 with errno.
    int set_angle_limit(float degrees);
    int teach();

    void hear(SensorHub::Sample const& sample) override;
    bool prepare(Occurrence const& occurrence, Event& event) override;
    Callback callback(Occurrence const& occurrence) const override;

private:
    unsigned short const sensor_id_;
    TiltAlarm alarm_;
};

// A button_t. Held at first: what the contact does meanwhile waits, up to kLongestQueue edges, and meets the records on
// the release. What moves or falls due while the object does not see the button is lost, with the press that it was of.
class ButtonObject : public ServedObject, ContactListener {
public:
    static constexpr std::size_t kLongestQueue = 16;  // edges, as many as the kernel keeps of a line

    ButtonObject(Components& device, Program& program, Text const& chip, long line, Duration debounce);

    // Whether the button is on the object's line.
    bool sees_button() const;
    void hold(bool held);

    void contact_moved(Time when, bool closes, Duration lasts) override;
    bool prepare(Occurrence const& occurrence, Event& event) override;
    void told(Occurrence const& occurrence, Done const& done) override;
    EventLane* lane() override;
    Callback callback(Occurrence const& occurrence) const override;
    void leave() override;

private:
    struct Edge {
        Time time;
        bool closes;
    };

    void look();
    unsigned long interruptions() const;
    void lose_what_was_not_seen();
    void queue(std::vector<ButtonEvents::Event> const& events);

    long const line_;
    unsigned long interruptions_;  // when it looked last
    bool held_ = true;
    Debounce debounce_;
    std::deque<Edge> edges_;
    ButtonEvents events_;
    std::deque<ButtonEvents::Event> ready_;
    std::shared_ptr<ButtonObject*> self_;  // what events on the timeline know of it
};

}  // namespace sim
