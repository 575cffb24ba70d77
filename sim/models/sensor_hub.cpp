// The motion sensor hub: its boot, its virtual sensors and the samples they make.
#include "sim/models/sensor_hub.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "sim/core/numbers.h"
#include "sim/models/refusal.h"

namespace sim {

namespace {

constexpr unsigned int kMaxLatency = 0xFFFFFF;  // ms, 24 bits
constexpr std::size_t kFifoSamples = 256;       // of one sensor; more are delivered before their latency is over
constexpr unsigned int kProductId = 0x89;
constexpr unsigned int kRomVersion = 5166;
constexpr std::uint8_t kInterruptControl = 0x0C;  // while firmware runs: no status and no debug FIFO

constexpr std::uint8_t kHostInterfaceReady = 1U << 4U;
constexpr std::uint8_t kFirmwareVerified = 1U << 5U;
constexpr std::uint8_t kVerifyError = 1U << 6U;
constexpr std::uint8_t kIdle = 1U << 7U;
constexpr unsigned int kAsserted = 1U;
constexpr unsigned int kWakeUpFifo = 1;     // where its two bits begin
constexpr unsigned int kNonWakeUpFifo = 3;  // the same
constexpr unsigned int kResetOrFault = 1U << 7U;

// Why a FIFO interrupts: its two bits.
constexpr unsigned int kAtOnce = 1;
constexpr unsigned int kLatencyOver = 2;
constexpr unsigned int kFull = 3;
constexpr unsigned int kFifoBits = 3;

// After which a device counts as stationary: by the sensor's definition.
constexpr Duration kRest = std::chrono::seconds(5);

struct Flag {
    char const* set;
    char const* clear;
};

// Bit by bit.
constexpr std::array<Flag, 8> kControlFlags{{
    {"wake-up FIFO off", "wake-up FIFO on"},
    {"non-wake-up FIFO off", "non-wake-up FIFO on"},
    {"status FIFO off", "status FIFO on"},
    {"debug off", "debug on"},
    {"fault off", "fault on"},
    {"active low", "active high"},
    {"edge", "level"},
    {"open drain", "push-pull"},
}};

template <typename... Args>
std::string line(char const* format, Args... args) {
    std::array<char, 160> text{};
    std::snprintf(text.data(), text.size(), format, args...);
    return text.data();
}

std::string row(char const* name, std::string const& value) {
    return line("  %-20s%s\n", name, value.c_str());
}

std::string row(char const* name, unsigned int value) {
    return row(name, std::to_string(value));
}

std::string hex(unsigned int value) {
    return line("0x%02X", value);
}

std::string rate_text(double rate) {
    return number_text(rate) + " Hz";
}

int not_present(char const* what, long long id, std::string& report) {
    report = line("%s %lld is not present\n", what, id);
    return refuse(EINVAL);
}

int not_running(std::string& report) {
    report = "The sensor hub runs no firmware\n";
    return refuse(EIO);
}

}  // namespace

Time SensorHub::Activity::sample_time(std::uint64_t number) const {
    return start + period * static_cast<Duration::rep>(number);
}

// When the FIFO has no room for more, if every period until then brings something.
Time SensorHub::Activity::full_time() const {
    return sample_time(taken - pending.size() + kFifoSamples);
}

Time SensorHub::Activity::delivery_time() const {
    Time const first = pending.empty() ? sample_time(taken + 1) : pending.front().taken;
    return std::min(first + std::chrono::milliseconds(latency_ms), full_time());
}

Time SensorHub::Activity::delivery_time(std::uint64_t so_many) const {
    return std::min(sample_time(so_many + 1) + std::chrono::milliseconds(latency_ms),
                    sample_time(so_many + kFifoSamples));
}

std::uint64_t SensorHub::Activity::due_until(Time time) const {
    return static_cast<std::uint64_t>(std::max(time - start, Duration::zero()) / period);
}

bool SensorHub::Activity::delivers_singly() const {
    return period > std::chrono::milliseconds(latency_ms);
}

void SensorHub::Activity::pass(std::uint64_t number) {
    while (!pending.empty() && delivered() < number) {
        pending.pop_front();
    }
    taken = std::max(taken, number);
}

void SensorHub::reset() {
    image_.reset();
    active_.clear();
    verify_error_ = false;
    reset_seen_ = false;
    read_interrupt();
}

int SensorHub::boot(std::optional<std::string> const& image) {
    reset();
    if (!image) {
        return refuse(ENOENT);
    }
    std::string bytes = *image;
    if (damages_images_ && !bytes.empty()) {
        bytes.back() = static_cast<char>(bytes.back() ^ 1);
    }
    image_ = read_firmware_image(bytes);
    verify_error_ = !image_;
    return image_ ? 0 : refuse(EBADMSG);
}

int SensorHub::upload(std::optional<std::string> const& image) {
    if (!image) {
        return refuse(ENOENT);
    }
    return begins_as_firmware_image(*image) ? boot(image) : refuse(EBADMSG);
}

int SensorHub::install_callbacks() {
    if (!running()) {
        return refuse(EIO);
    }
    ++callback_users_;
    return 0;
}

int SensorHub::activate(unsigned int id, float rate, unsigned int latency_ms, Time now) {
    if (!running()) {
        return refuse(EIO);
    }
    VirtualSensor const* const sensor = find_virtual_sensor(id);
    if (sensor == nullptr || latency_ms > kMaxLatency) {
        return refuse(EINVAL);
    }
    auto const in_force = rate >= 0.0F ? supported_rate(*sensor, static_cast<double>(rate)) : std::nullopt;
    if (!in_force) {
        return refuse(EINVAL);
    }
    if (sensor->orientation && !integrates()) {
        integrates_since_ = now;
    }
    active_.erase(id);
    if (rate > 0.0F) {
        Rotation const lies = orientation_.at(now);
        Watch const watch{lies, lower_edge(lies, sensor->angle), now};
        Duration const period(std::llround(1e6 / *in_force));  // a whole number at every rate that a sensor has
        active_.emplace(id, Activity{*in_force, period, latency_ms, now, watch, 0, {}});
    }
    return 0;
}

bool SensorHub::integrates() const {
    return std::any_of(active_.begin(), active_.end(),
                       [](auto const& active) { return find_virtual_sensor(active.first)->orientation; });
}

hal::quaternion_s16_t SensorHub::measure(Time now) const {
    return orientation_.measure(now, now - integrates_since_);
}

std::optional<Time> SensorHub::next_delivery() const {
    std::optional<Time> next;
    for (auto const& [id, activity] : active_) {
        bool const delivers = find_virtual_sensor(id)->trigger != Trigger::never;
        if (delivers && (!next || activity.delivery_time() < *next)) {
            next = activity.delivery_time();
        }
    }
    return next;
}

// Takes the samples due up to now.
void SensorHub::advance(Time now) {
    for (auto& [id, activity] : active_) {
        VirtualSensor const& sensor = *find_virtual_sensor(id);
        for (Time due = activity.sample_time(activity.taken + 1); due <= now;
             due = activity.sample_time(activity.taken + 1)) {
            ++activity.taken;
            if (reports(sensor, activity.watch, due)) {
                auto const kind = sensor.orientation ? hal::cb_struct_te::quaternion_s16 : hal::cb_struct_te::none;
                activity.pending.push_back({due, static_cast<std::uint8_t>(id), kind, measure(due)});
            }
        }
    }
}

// What the sensor sees of the device as it truly lies: the turn rates and gravity do not run away.
bool SensorHub::reports(VirtualSensor const& sensor, Watch& watch, Time now) const {
    if (sensor.trigger == Trigger::period) {
        return true;
    }
    Rotation const lies = orientation_.at(now);
    switch (sensor.trigger) {
        case Trigger::turn:
        case Trigger::tilt: {
            bool const turns = sensor.trigger == Trigger::turn;
            double const angle = turns ? angle_between(watch.reference, lies) : tilt_between(watch.reference, lies);
            bool const moved = angle >= sensor.angle;
            watch.reference = moved ? lies : watch.reference;
            return moved;
        }
        case Trigger::edge: {
            Edge const edge = lower_edge(lies, sensor.angle);
            bool const changed = edge != Edge::none && edge != watch.edge;
            watch.edge = changed ? edge : watch.edge;
            return changed;
        }
        case Trigger::rest: {
            if (angle_between(watch.reference, lies) >= sensor.angle) {
                watch = {lies, watch.edge, now};
            }
            bool const comes_to_rest = !watch.rests && now - watch.still_since >= kRest;
            watch.rests = watch.rests || comes_to_rest;
            return comes_to_rest;
        }
        case Trigger::period:
        case Trigger::never:
            break;
    }
    return false;
}

// The last to speak of a FIFO is heard.
void SensorHub::tell_of_fifo(unsigned int id, Activity const& activity, bool full, Time time) {
    unsigned int const reason = full ? kFull : activity.latency_ms == 0 ? kAtOnce : kLatencyOver;
    bool const wake_up = find_virtual_sensor(id)->wake_up;
    unsigned int const at = wake_up ? kWakeUpFifo : kNonWakeUpFifo;
    if (time < told_[wake_up ? 1 : 0]) {
        return;
    }
    told_[wake_up ? 1 : 0] = time;
    fifos_told_ = (fifos_told_ & ~(kFifoBits << at)) | (reason << at);
}

std::vector<SensorHub::Sample> SensorHub::take_samples(Time now) {
    advance(now);
    std::vector<Sample> samples;
    for (auto due = next_delivery(); due && *due <= now; due = next_delivery()) {
        for (auto& [id, activity] : active_) {
            bool const delivers = !activity.pending.empty() && activity.delivery_time() == *due;
            if (delivers) {
                tell_of_fifo(id, activity, activity.full_time() == *due, *due);
            }
            while (delivers && !activity.pending.empty() && activity.pending.front().taken <= *due) {
                samples.push_back(activity.pending.front());
                activity.pending.pop_front();
            }
        }
    }
    samples_ += samples.size();
    return samples;
}

void SensorHub::pass_samples(Time now) {
    for (auto& [id, activity] : active_) {
        if (find_virtual_sensor(id)->trigger != Trigger::period) {
            continue;
        }
        std::uint64_t const before = activity.delivered();
        std::uint64_t passed = before;
        if (activity.delivers_singly()) {
            passed = std::max(before, activity.due_until(now - std::chrono::milliseconds(activity.latency_ms)));
        }
        Time last = activity.sample_time(passed) + std::chrono::milliseconds(activity.latency_ms);
        bool full = false;
        for (Time due = activity.delivery_time(passed); due <= now; due = activity.delivery_time(passed)) {
            full = activity.sample_time(passed + kFifoSamples) == due;
            last = due;
            passed = activity.due_until(due);
        }
        activity.pass(passed);
        samples_ += passed - before;
        if (passed != before) {
            tell_of_fifo(id, activity, full, last);
        }
    }
    take_samples(now);  // of the others
}

bool SensorHub::tilt(Angles const& target, Time now, Duration over) {
    advance(now);
    return orientation_.tilt(target, now, over);
}

int SensorHub::measure(unsigned int id, Time now, hal::quaternion_s16_t& sample) const {
    if (active_.count(id) == 0 || !find_virtual_sensor(id)->orientation) {
        return refuse(EIO);
    }
    sample = measure(now);
    return 0;
}

std::uint8_t SensorHub::boot_status() const {
    unsigned int status = kHostInterfaceReady;
    status |= running() ? kFirmwareVerified : 0U;
    status |= verify_error_ ? kVerifyError : 0U;
    status |= active_.empty() ? kIdle : 0U;
    return static_cast<std::uint8_t>(status);
}

int SensorHub::report_firmware(std::string& report) const {
    std::uint8_t const status = boot_status();
    unsigned int const version = firmware_version();
    char const* image = "none";
    if (running()) {
        image = image_->variant == HubVariant::bhi260ap ? "BHI260AP" : "BHI260AB";
    }
    report = "Sensor hub firmware\n" + row("product id", hex(kProductId)) + row("image", image) +
             row("ROM version", kRomVersion) + row("kernel version", version) + row("user version", version) +
             row("boot status", hex(status));
    for (auto const& [bit, name] :
         {std::pair(kHostInterfaceReady, "host interface ready"), std::pair(kFirmwareVerified, "firmware verified"),
          std::pair(kVerifyError, "firmware verify error"), std::pair(kIdle, "idle")}) {
        report += row("", std::string(name) + ((status & bit) != 0 ? ": yes" : ": no"));
    }
    return 0;
}

int SensorHub::report_virtual_sensors(std::string& report) const {
    if (!running()) {
        return not_running(report);
    }
    report = line("Virtual sensors\n  %3s  %-36s%10s%10s\n", "id", "name", "min Hz", "max Hz");
    for (VirtualSensor const& sensor : virtual_sensors()) {
        report += line("  %3u  %-36s%10s%10s\n", sensor.id, std::string(sensor.name).c_str(),
                       number_text(sensor.min_rate).c_str(), number_text(sensor.max_rate).c_str());
    }
    return 0;
}

int SensorHub::report_physical_sensors(std::string& report) const {
    if (!running()) {
        return not_running(report);
    }
    report = line("Physical sensors\n  %3s  %s\n", "id", "name");
    for (PhysicalSensor const& sensor : physical_sensors()) {
        report += line("  %3u  %s\n", sensor.id, std::string(sensor.name).c_str());
    }
    return 0;
}

int SensorHub::report_virtual_sensor(long long id, std::string& report) const {
    if (!running()) {
        return not_running(report);
    }
    VirtualSensor const* const sensor = find_virtual_sensor(id);
    if (sensor == nullptr) {
        return not_present("Virtual sensor", id, report);
    }
    report = line("Virtual sensor %u: ", sensor->id) + std::string(sensor->name) + "\n" + row("type", sensor->id) +
             row("driver id", sensor->id) + row("driver version", 1U) + row("power", 0U) +
             row("maximum range", sensor->max_range) + row("resolution", sensor->resolution) +
             row("maximum rate", rate_text(sensor->max_rate)) + row("fifo reserved", 0U) +
             row("fifo maximum", static_cast<unsigned int>(kFifoSamples)) + row("event size", sensor->event_size) +
             row("minimum rate", rate_text(sensor->min_rate));
    return 0;
}

int SensorHub::report_configuration(long long id, std::string& report) const {
    if (!running()) {
        return not_running(report);
    }
    VirtualSensor const* const sensor = find_virtual_sensor(id);
    if (sensor == nullptr) {
        return not_present("Virtual sensor", id, report);
    }
    auto const active = active_.find(sensor->id);
    bool const on = active != active_.end();
    report = line("Configuration of virtual sensor %u: ", sensor->id) + std::string(sensor->name) + "\n" +
             row("sample rate", rate_text(on ? active->second.rate : 0.0)) +
             row("latency", std::to_string(on ? active->second.latency_ms : 0) + " ms") + row("sensitivity", 0U) +
             row("range", sensor->max_range);
    return 0;
}

int SensorHub::report_physical_sensor(long long id, std::string& report) const {
    if (!running()) {
        return not_running(report);
    }
    PhysicalSensor const* const sensor = find_physical_sensor(id);
    if (sensor == nullptr) {
        return not_present("Physical sensor", id, report);
    }
    report = line("Physical sensor %u: ", sensor->id) + std::string(sensor->name) + "\n" +
             row("maximum range", sensor->max_range) + row("resolution", sensor->resolution) +
             row("maximum rate", rate_text(sensor->max_rate));
    return 0;
}

int SensorHub::report_interrupt(std::string& report) {
    unsigned int const reasons = fifos_told_ | (reset_seen_ ? 0U : kResetOrFault);
    unsigned int const status = reasons != 0 ? reasons | kAsserted : 0U;
    reset_seen_ = true;
    read_interrupt();
    // The status FIFO and debug are off, as the interrupt control tells.
    auto const set = [status](unsigned int bits) { return (status & bits) != 0 ? "yes" : "no"; };
    report = "Interrupt status\n" + row("register 0x2D", hex(status)) + row("asserted", set(kAsserted)) +
             row("wake-up FIFO", set(kFifoBits << kWakeUpFifo)) +
             row("non-wake-up FIFO", set(kFifoBits << kNonWakeUpFifo)) + row("status FIFO", "no") + row("debug", "no") +
             row("reset or fault", set(kResetOrFault));
    return 0;
}

int SensorHub::report_interrupt_control(std::string& report) const {
    unsigned int const control = running() ? kInterruptControl : 0U;
    report = "Interrupt control\n" + row("register 0x07", hex(control));
    for (std::size_t bit = 0; bit < kControlFlags.size(); ++bit) {
        report += row("", (control >> bit & 1U) != 0 ? kControlFlags[bit].set : kControlFlags[bit].clear);
    }
    return 0;
}

int SensorHub::set_upload_time(unsigned int ms) {
    if (ms > kLongestUpload) {
        return refuse(EINVAL);
    }
    upload_time_ms_ = ms;
    return 0;
}

int SensorHub::set_noise(double degrees) {
    return orientation_.set_noise(degrees) ? 0 : refuse(EINVAL);
}

int SensorHub::set_drift(double degrees_a_minute) {
    return orientation_.set_drift(degrees_a_minute) ? 0 : refuse(EINVAL);
}

std::vector<SensorHub::ActiveSensor> SensorHub::active_sensors() const {
    std::vector<ActiveSensor> sensors;
    for (auto const& [id, activity] : active_) {
        sensors.push_back({id, activity.rate, activity.latency_ms});
    }
    return sensors;
}

}  // namespace sim
