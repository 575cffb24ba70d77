// The private mount namespace in which the device's files exist, made with bubblewrap.
#include "sim/tool/sandbox.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string_view>

#include "sim/control/control_socket.h"
#include "sim/core/descriptor.h"
#include "sim/device/nodes.h"

namespace sim {

namespace {

using Arguments = std::vector<std::string>;

// Top-level directories that the sandbox has for itself.
constexpr std::array<std::string_view, 6> kOwnDirectories{"/dev", "/proc", "/sys", "/tmp", "/opt", "/r47-sim"};

char const* const kControlDirectory = "/r47-sim/control";
char const* const kJournal = "/r47-sim/journal";
char const* const kScenario = "/r47-sim/scenario";

bool is_own_directory(std::string const& path) {
    return path == "/" || std::find(kOwnDirectories.begin(), kOwnDirectories.end(), path) != kOwnDirectories.end();
}

bool is_below_own_directory(std::string const& path) {
    return std::any_of(kOwnDirectories.begin(), kOwnDirectories.end(), [&](std::string_view directory) {
        return path.size() > directory.size() && path[directory.size()] == '/' &&
               path.compare(0, directory.size(), directory) == 0;
    });
}

void add(Arguments& arguments, std::initializer_list<std::string> more) {
    arguments.insert(arguments.end(), more);
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
void show_entry(Arguments& arguments, std::string const& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return;
    }
    if (S_ISLNK(status.st_mode)) {
        add(arguments, {"--symlink", link_target(path), path});
    } else if (S_ISDIR(status.st_mode) || S_ISREG(status.st_mode)) {
        add(arguments, {"--ro-bind-try", path, path});
    }
}

void add_host(Arguments& arguments) {
    for (std::string const& name : entries_of("/")) {
        std::string const path = "/" + name;
        if (!is_own_directory(path)) {
            show_entry(arguments, path);
        }
    }
    add(arguments, {"--bind", "/proc", "/proc", "--dev", "/dev", "--tmpfs", "/sys", "--tmpfs", "/opt"});
    for (std::string const& name : entries_of("/opt")) {
        if (name != "kelvora") {
            show_entry(arguments, "/opt/" + name);
        }
    }
    add(arguments, {"--perms", "1777", "--tmpfs", "/tmp"});
}

// A descriptor from which bubblewrap reads `content`.
int content_descriptor(std::string const& content) {
    // Not closed on exec, and out of the way of the standard descriptors.
    int const low = ::memfd_create("r47-sim", 0);
    int const fd = ::fcntl(low, F_DUPFD, 10);
    ::close(low);
    std::size_t written = 0;
    while (written < content.size()) {
        ssize_t const count = ::write(fd, content.data() + written, content.size() - written);
        if (count <= 0) {
            break;
        }
        written += static_cast<std::size_t>(count);
    }
    ::lseek(fd, 0, SEEK_SET);
    return fd;
}

void add_file(Arguments& arguments, NodeFile const& file) {
    add(arguments, {"--perms", "0600", "--file", std::to_string(content_descriptor(file.content)), file.path});
}

void add_device(Arguments& arguments, SandboxOptions const& options) {
    for (NodeFile const& file : device_files()) {
        if (std::find(options.without.begin(), options.without.end(), file.path) == options.without.end()) {
            add_file(arguments, file);
        }
    }
    add_file(arguments, {"/sys/class/gpio/export", ""});
    add_file(arguments, {"/sys/class/gpio/unexport", ""});
}

// A program's file, found as execvp does.
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

// Shows the directory of a program that the sandbox would hide; of a program that lies directly in one of the
// sandbox's own directories, the file alone.
void add_program(Arguments& arguments, std::string const& path) {
    std::string const file = real_path(path);
    std::string const directory = directory_of(file);
    if (file.empty() || !is_below_own_directory(file)) {
        return;
    }
    std::string const& shown = is_own_directory(directory) ? file : directory;
    add(arguments, {"--ro-bind", shown, shown});
}

void add_working_directory(Arguments& arguments) {
    std::string const directory = real_path(".");
    if (!is_own_directory(directory)) {
        add(arguments, {"--bind", directory, directory});
    }
    add(arguments, {"--chdir", directory});
}

void set_or_clear(Arguments& arguments, std::string const& name, std::string const& value) {
    if (value.empty()) {
        add(arguments, {"--unsetenv", name});
    } else {
        add(arguments, {"--setenv", name, value});
    }
}

void add_control(Arguments& arguments, SandboxOptions const& options) {
    std::string const directory = real_path(directory_of(options.control));
    std::string const name = options.control.substr(options.control.rfind('/') + 1);
    add_file(arguments, {kSandboxMark, ""});
    add(arguments, {"--bind", directory, kControlDirectory});
    if (!options.journal.empty()) {
        add(arguments, {"--bind", real_path(options.journal), kJournal});
    }
    if (!options.scenario.empty()) {
        add(arguments, {"--ro-bind", real_path(options.scenario), kScenario});
    }
    set_or_clear(arguments, "R47_SIM_CONTROL", std::string(kControlDirectory) + "/" + name);
    set_or_clear(arguments, "R47_SIM_JOURNAL", options.journal.empty() ? "" : kJournal);
    set_or_clear(arguments, "R47_SIM_SCENARIO", options.scenario.empty() ? "" : kScenario);
    set_or_clear(arguments, "R47_SIM_CLOCK", options.clock);
}

// Replaces this process; returns on failure with errno set.
void execute(Arguments const& arguments) {
    std::vector<char*> pointers;
    for (std::string const& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    ::execvp(pointers.front(), pointers.data());
}

// The exit status of a quiet run; 127 when the program cannot be executed.
int try_quietly(Arguments const& arguments) {
    pid_t const child = ::fork();
    if (child == 0) {
        int const null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        execute(arguments);
        ::_exit(127);
    }
    int status = 0;
    while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return child > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

// Root of a user namespace, where the host allows that and this program is to be seen from it (root's clone of
// another user's private files is not); otherwise root itself, which may then still read them. No other rights:
// a file that nobody may read is not read. With CAP_SETFCAP a sandbox inside this one may map its root as well.
Error choose_user(Arguments& arguments) {
    Arguments as_root{"--unshare-user", "--uid", "0", "--gid", "0"};
    add(as_root, {"--cap-drop", "ALL", "--cap-add", "CAP_SETFCAP"});
    Arguments trial{"bwrap"};
    trial.insert(trial.end(), as_root.begin(), as_root.end());
    add(trial, {"--ro-bind", "/", "/", "--", "test", "-r", program_path(program_invocation_name)});
    int const status = try_quietly(trial);
    if (status == 127) {
        return "bwrap is missing: install the package bubblewrap";
    }
    if (status == 0) {
        arguments.insert(arguments.end(), as_root.begin(), as_root.end());
    } else if (::geteuid() == 0) {
        add(arguments, {"--cap-drop", "ALL", "--cap-add", "CAP_DAC_READ_SEARCH"});
    } else {
        return "this host does not let users make user namespaces: run it with sudo";
    }
    return {};
}

}  // namespace

Error become_sandbox(SandboxOptions const& options) {
    Arguments arguments{"bwrap"};
    Error error = choose_user(arguments);
    if (!error.empty()) {
        return error;
    }
    if (options.private_network) {
        add(arguments, {"--unshare-net"});
    }
    add(arguments, {"--die-with-parent"});
    add_host(arguments);
    add_device(arguments, options);
    add_program(arguments, program_path(program_invocation_name));
    add_program(arguments, program_path(options.command.front()));
    add_working_directory(arguments);
    add_control(arguments, options);
    add(arguments, {"--"});
    arguments.insert(arguments.end(), options.command.begin(), options.command.end());
    execute(arguments);
    return std::string("cannot run bwrap: ") + std::strerror(errno);
}

}  // namespace sim
