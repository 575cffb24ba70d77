// What a program inside the virtual device sees of files, and as whom: one description for every kind of sandbox.
#include "sim/tool/sandbox_view.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "sim/control/device_directory.h"
#include "sim/device/nodes.h"

namespace sim {

namespace {

using Kind = ViewStep::Kind;
using Steps = std::vector<ViewStep>;

constexpr std::string_view kNodes = "/dev/";

// Top-level directories that the sandbox has for itself.
constexpr std::array<std::string_view, 6> kOwnDirectories{"/dev", "/proc", "/sys", "/tmp", "/opt", "/r47-sim"};

char const* const kDevice = "/r47-sim/device";  // the device's directory, in the sandbox

std::string directory_of(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool is_own_directory(std::string const& path) {
    return path == "/" || std::find(kOwnDirectories.begin(), kOwnDirectories.end(), path) != kOwnDirectories.end();
}

bool is_below_own_directory(std::string const& path) {
    return std::any_of(kOwnDirectories.begin(), kOwnDirectories.end(), [&](std::string_view directory) {
        return path.size() > directory.size() && path[directory.size()] == '/' &&
               path.compare(0, directory.size(), directory) == 0;
    });
}

std::string real_path(std::string const& path) {
    std::array<char, PATH_MAX> real{};
    return ::realpath(path.c_str(), real.data()) != nullptr ? real.data() : "";
}

std::vector<std::string> entries_of(std::string const& directory) {
    std::vector<std::string> entries;
    DIR* const open = ::opendir(directory.c_str());
    if (open == nullptr) {
        return entries;
    }
    while (dirent const* const entry = ::readdir(open)) {
        std::string const name = entry->d_name;
        if (name != "." && name != "..") {
            entries.push_back(name);
        }
    }
    ::closedir(open);
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::string link_target(std::string const& path) {
    std::array<char, PATH_MAX> target{};
    ssize_t const length = ::readlink(path.c_str(), target.data(), target.size());
    return {target.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

// Shows one entry of the host as it is, read only.
void show_entry(Steps& steps, std::string const& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return;
    }
    if (S_ISLNK(status.st_mode)) {
        steps.push_back({Kind::link, path, link_target(path)});
    } else if (S_ISDIR(status.st_mode) || S_ISREG(status.st_mode)) {
        steps.push_back({Kind::read_only, path, path});
    }
}

void add_host(Steps& steps) {
    for (std::string const& name : entries_of("/")) {
        std::string const path = "/" + name;
        if (!is_own_directory(path)) {
            show_entry(steps, path);
        }
    }
    steps.push_back({Kind::writable, "/proc", "/proc"});
    steps.push_back({Kind::devices, "/dev"});
    steps.push_back({Kind::directory, "/opt"});
    for (std::string const& name : entries_of("/opt")) {
        if (name != "kelvora") {
            show_entry(steps, "/opt/" + name);
        }
    }
    steps.push_back({Kind::scratch, "/tmp"});
}

// The device's files come and go while programs run. Its nodes lie in a directory that is not the device's alone: they
// are links to where it has them.
void add_device(SandboxView& view, std::string const& directory) {
    view.steps.push_back({Kind::writable, kDevice, real_path(directory)});
    for (NodeFile const& file : device_files()) {
        if (file.path.compare(0, kNodes.size(), kNodes) == 0) {
            view.steps.push_back({Kind::link, file.path, device_files_root(kDevice) + file.path});
        }
    }
    for (char const* const whole : {"/sys", "/opt/kelvora"}) {
        view.steps.push_back({Kind::writable, whole, real_path(device_files_root(directory) + whole)});
    }
    view.environment = {{"R47_SIM_DEVICE", kDevice}};
}

// Shows the directory of a program or library that the sandbox would hide; of one that lies directly in one of the
// sandbox's own directories, the file alone.
void show_file(Steps& steps, std::string const& path) {
    std::string const file = real_path(path);
    std::string const directory = directory_of(file);
    if (file.empty() || !is_below_own_directory(file)) {
        return;
    }
    std::string const& shown = is_own_directory(directory) ? file : directory;
    steps.push_back({Kind::read_only, shown, shown});
}

// An installed library lies in a directory that nobody else searches. What the caller searches goes first, and in a
// build directory there is none there: a program finds its library itself.
void add_installed_library(SandboxView& view) {
    std::string const own = real_path(program_path(program_invocation_name));
    std::string const library = real_path(directory_of(own) + "/" R47_LIBRARY_DIRECTORY "/libhal.so.2");
    if (library.empty()) {
        return;
    }
    show_file(view.steps, library);
    char const* const searched = std::getenv("LD_LIBRARY_PATH");
    std::string const before = searched == nullptr || *searched == '\0' ? "" : std::string(searched) + ":";
    view.environment.emplace_back("LD_LIBRARY_PATH", before + directory_of(library));
}

}  // namespace

std::string program_path(std::string const& command) {
    char const* const search = std::getenv("PATH");
    if (command.find('/') != std::string::npos || search == nullptr) {
        return command;
    }
    std::istringstream directories(search);
    for (std::string directory; std::getline(directories, directory, ':');) {
        std::string path = directory;
        path += "/" + command;
        if (::access(path.c_str(), X_OK) == 0) {
            return path;
        }
    }
    return command;
}

SandboxView view_of(SandboxOptions const& options) {
    SandboxView view;
    add_host(view.steps);
    add_device(view, options.device);
    show_file(view.steps, program_path(program_invocation_name));
    show_file(view.steps, program_path(options.command.front()));
    add_installed_library(view);
    view.working_directory = real_path(".");
    if (!is_own_directory(view.working_directory)) {
        view.steps.push_back({Kind::writable, view.working_directory, view.working_directory});
    }
    return view;
}

}  // namespace sim
