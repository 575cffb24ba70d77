// The files by which programs find the device: its nodes, its GPIO value file and its firmware files.
#include "sim/device/nodes.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "sim/models/firmware_image.h"
#include "sim/models/image_sensor.h"

namespace sim {

namespace {

constexpr std::uint16_t kFirmwareVersion = 5991;  // of the maker's release for this hub

Error system_error(std::string const& what) {
    return what + ": " + std::strerror(errno);
}

Error find_file(std::string const& path, NodeFile const*& file) {
    auto const& files = device_files();
    auto const found = std::find_if(files.begin(), files.end(), [&](NodeFile const& f) { return f.path == path; });
    if (found == files.end()) {
        return path + " is no file of the device";
    }
    file = &*found;
    return {};
}

}  // namespace

std::vector<NodeFile> const& device_files() {
    // Never destroyed: the library's threads may outlive the program's statics.
    static auto const& files = *new std::vector<NodeFile>{
        {"/dev/r47-rtu-driver", ""},
        {"/dev/r47-illumination-driver", ""},
        {"/dev/r47-autofocus-driver", ""},
        {"/dev/r47-tof-driver", ""},
        {imx296_facts().node, ""},
        {imx567_facts().node, ""},
        {"/dev/i2c-2", ""},
        {"/dev/gpiochip1", ""},
        {"/sys/class/gpio/gpio481/value", "0\n"},
        {"/opt/kelvora/libhal/fw/kelvora-260AP_1.6.fw", make_firmware_image({HubVariant::bhi260ap, kFirmwareVersion})},
        {"/opt/kelvora/libhal/fw/kelvora-260AB_turbo-1.x.fw",
         make_firmware_image({HubVariant::bhi260ab, kFirmwareVersion})},
    };
    return files;
}

bool HostFileSystem::readable(std::string const& path) const {
    return ::faccessat(AT_FDCWD, (root_ + path).c_str(), R_OK, AT_EACCESS) == 0;
}

Error HostFileSystem::remove(std::string const& path) {
    return ::unlink((root_ + path).c_str()) == 0 ? Error() : system_error("cannot remove " + path);
}

Error HostFileSystem::write(NodeFile const& file) {
    std::string const path = root_ + file.path;
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    int const fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        return system_error("cannot restore " + file.path);
    }
    bool const written =
        ::write(fd, file.content.data(), file.content.size()) == static_cast<ssize_t>(file.content.size());
    Error error = written ? Error() : system_error("cannot write " + file.path);
    ::close(fd);
    return error;
}

MemoryFileSystem::MemoryFileSystem(std::vector<std::string> const& missing) {
    for (NodeFile const& file : device_files()) {
        if (std::find(missing.begin(), missing.end(), file.path) == missing.end()) {
            paths_.push_back(file.path);
        }
    }
}

bool MemoryFileSystem::readable(std::string const& path) const {
    return std::find(paths_.begin(), paths_.end(), path) != paths_.end();
}

Error MemoryFileSystem::remove(std::string const& path) {
    paths_.erase(std::find(paths_.begin(), paths_.end(), path));
    return {};
}

Error MemoryFileSystem::write(NodeFile const& file) {
    paths_.push_back(file.path);
    return {};
}

hal::imx_te Nodes::fitted_sensor() const {
    for (SensorFacts const* const sensor : image_sensors()) {
        if (present(sensor->node)) {
            return sensor->type;
        }
    }
    return hal::imx_te::none;
}

Error Nodes::remove(std::string const& path) {
    NodeFile const* file = nullptr;
    Error error = find_file(path, file);
    if (!error.empty()) {
        return error;
    }
    if (!present(path)) {
        return path + " is missing already";
    }
    error = files_->remove(path);
    removals_[path] += error.empty() ? 1 : 0;
    return error;
}

unsigned long Nodes::removals(std::string const& path) const {
    auto const found = removals_.find(path);
    return found != removals_.end() ? found->second : 0;
}

Error Nodes::restore(std::string const& path) {
    NodeFile const* file = nullptr;
    Error error = find_file(path, file);
    if (!error.empty()) {
        return error;
    }
    return present(path) ? path + " is there already" : files_->write(*file);
}

Error Nodes::restore_all(std::vector<std::string> const& missing) {
    for (NodeFile const& file : device_files()) {
        bool const left_out = std::find(missing.begin(), missing.end(), file.path) != missing.end();
        Error error = left_out || present(file.path) ? Error() : files_->write(file);
        if (!error.empty()) {
            return error;
        }
    }
    return {};
}

std::string Nodes::list() const {
    std::string list;
    for (NodeFile const& file : device_files()) {
        list += (present(file.path) ? "present  " : "missing  ") + file.path + "\n";
    }
    return list;
}

}  // namespace sim
