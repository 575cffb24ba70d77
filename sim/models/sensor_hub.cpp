// The motion sensor hub: its boot, its virtual sensors and the samples they make.
#include "sim/models/sensor_hub.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "sim/core/numbers.h"
#include "sim/models/refusal.h"
#include "sim/models/sensor_catalogue.h"

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
constexpr std::uint8_t kAsserted = 1U << 0U;
constexpr std::uint8_t kResetOrFault = 1U << 7U;

struct Flag {
    std::uint8_t bit;
    char const* set;
    char const* clear;
};

constexpr std::array<Flag, 8> kControlFlags{{
    {0x01, "wake-up FIFO off", "wake-up FIFO on"},
    {0x02, "non-wake-up FIFO off", "non-wake-up FIFO on"},
    {0x04, "status FIFO off", "status FIFO on"},
    {0x08, "debug off", "debug on"},
    {0x10, "fault off", "fault on"},
    {0x20, "active low", "active high"},
    {0x40, "edge", "level"},
    {0x80, "open drain", "push-pull"},
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

template <typename Float>
std::string rate_text(Float rate) {
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
    return start + Duration(std::llround(1e6 * static_cast<double>(number) / static_cast<double>(rate)));
}

Time SensorHub::Activity::delivery_time() const {
    std::uint64_t const first = taken - pending.size() + 1;
    return std::min(sample_time(first) + std::chrono::milliseconds(latency_ms), sample_time(first + kFifoSamples - 1));
}

void SensorHub::reset() {
    image_.reset();
    active_.clear();
    verify_error_ = false;
    reset_seen_ = false;
}

int SensorHub::boot(std::optional<std::string> const& image) {
    reset();
    if (!image) {
        return refuse(ENOENT);
    }
    image_ = read_firmware_image(*image);
    verify_error_ = !image_;
    return image_ ? 0 : refuse(EBADMSG);
}

int SensorHub::upload(std::optional<std::string> const& image) {
    if (!image) {
        return refuse(ENOENT);
    }
    return read_firmware_image(*image) ? boot(image) : refuse(EBADMSG);
}

int SensorHub::install_callbacks() {
    if (!running()) {
        return refuse(EIO);
    }
    callbacks_installed_ = true;
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
    bool const off = rate == 0.0F;
    bool const in_range =
        static_cast<double>(rate) >= sensor->least_rate && static_cast<double>(rate) <= sensor->max_rate;
    if (!off && !in_range) {
        return refuse(EINVAL);
    }
    active_.erase(id);
    if (!off) {
        active_.emplace(id, Activity{rate, latency_ms, now, 0, {}});
    }
    return 0;
}

std::optional<Time> SensorHub::next_delivery() const {
    std::optional<Time> next;
    for (auto const& [id, activity] : active_) {
        bool const delivers = find_virtual_sensor(id)->continuous;
        if (delivers && (!next || activity.delivery_time() < *next)) {
            next = activity.delivery_time();
        }
    }
    return next;
}

// Takes the samples due up to now. Those of events are none: the device lies on a bench.
void SensorHub::advance(Time now) {
    for (auto& [id, activity] : active_) {
        VirtualSensor const& sensor = *find_virtual_sensor(id);
        if (!sensor.continuous) {
            continue;
        }
        for (Time due = activity.sample_time(activity.taken + 1); due <= now;
             due = activity.sample_time(activity.taken + 1)) {
            auto const kind = sensor.orientation ? hal::cb_struct_te::quaternion_s16 : hal::cb_struct_te::none;
            activity.pending.push_back({due, static_cast<std::uint8_t>(id), kind, orientation_.measure(due)});
            ++activity.taken;
        }
    }
}

std::vector<SensorHub::Sample> SensorHub::take_samples(Time now) {
    advance(now);
    std::vector<Sample> samples;
    for (auto due = next_delivery(); due && *due <= now; due = next_delivery()) {
        for (auto& [id, activity] : active_) {
            bool const delivers = !activity.pending.empty() && activity.delivery_time() == *due;
            while (delivers && !activity.pending.empty() && activity.pending.front().taken <= *due) {
                samples.push_back(activity.pending.front());
                activity.pending.pop_front();
            }
        }
    }
    samples_ += samples.size();
    return samples;
}

bool SensorHub::tilt(Angles const& target, Time now, Duration over) {
    advance(now);
    return orientation_.tilt(target, now, over);
}

int SensorHub::measure(unsigned int id, Time now, hal::quaternion_s16_t& sample) const {
    if (active_.count(id) == 0 || !find_virtual_sensor(id)->orientation) {
        return refuse(EIO);
    }
    sample = orientation_.measure(now);
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
    unsigned int const version = running() ? image_->version : 0;
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
             row("sample rate", rate_text(on ? active->second.rate : 0.0F)) +
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
    unsigned int const status = reset_seen_ ? 0U : kAsserted | kResetOrFault;
    reset_seen_ = true;
    auto const set = [status](unsigned int bits) { return (status & bits) != 0 ? "yes" : "no"; };
    report = "Interrupt status\n" + row("register 0x2D", hex(status)) + row("asserted", set(kAsserted)) +
             row("wake-up FIFO", set(0x06)) + row("non-wake-up FIFO", set(0x18)) + row("status FIFO", set(0x20)) +
             row("debug", set(0x40)) + row("reset or fault", set(kResetOrFault));
    return 0;
}

int SensorHub::report_interrupt_control(std::string& report) const {
    unsigned int const control = running() ? kInterruptControl : 0U;
    report = "Interrupt control\n" + row("register 0x07", hex(control));
    for (Flag const& flag : kControlFlags) {
        report += row("", (control & flag.bit) != 0 ? flag.set : flag.clear);
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

std::vector<SensorHub::ActiveSensor> SensorHub::active_sensors() const {
    std::vector<ActiveSensor> sensors;
    for (auto const& [id, activity] : active_) {
        sensors.push_back({id, activity.rate, activity.latency_ms});
    }
    return sensors;
}

}  // namespace sim
