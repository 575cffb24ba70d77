// The sandbox as a private mount namespace, made with bubblewrap.
#include "sim/tool/bubblewrap.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <initializer_list>

namespace sim {

namespace {

using Kind = ViewStep::Kind;

void add(Arguments& arguments, std::initializer_list<std::string> more) {
    arguments.insert(arguments.end(), more);
}

void add(Arguments& arguments, Arguments const& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
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

void add_step(Arguments& arguments, ViewStep const& step) {
    switch (step.kind) {
        case Kind::read_only:
            return add(arguments, {"--ro-bind-try", step.content, step.path});
        case Kind::writable:
            return add(arguments, {"--bind", step.content, step.path});
        case Kind::link:
            return add(arguments, {"--symlink", step.content, step.path});
        case Kind::devices:
            return add(arguments, {"--dev", step.path});
        case Kind::directory:
            return add(arguments, {"--tmpfs", step.path});
        case Kind::scratch:
            return add(arguments, {"--perms", "1777", "--tmpfs", step.path});
        case Kind::device_file:
            return add(arguments,
                       {"--perms", "0600", "--file", std::to_string(content_descriptor(step.content)), step.path});
    }
}

void set_or_clear(Arguments& arguments, std::string const& name, std::string const& value) {
    if (value.empty()) {
        add(arguments, {"--unsetenv", name});
    } else {
        add(arguments, {"--setenv", name, value});
    }
}

}  // namespace

// Root of a user namespace, where the host allows that and this program is to be seen from it (root's clone of
// another user's private files is not); otherwise root itself, which may then still read them. No other rights:
// a file that nobody may read is not read. With CAP_SETFCAP a sandbox inside this one may map its root as well.
Namespaces try_namespaces(Arguments& as_root) {
    // With rights that a user's program was handed down, as in a network of its own, bubblewrap refuses to start.
    ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
    Arguments const host_and_command{"--ro-bind", "/", "/", "--", "test", "-r", program_path(program_invocation_name)};
    auto const status_as = [&](Arguments const& who) {
        Arguments trial{"bwrap"};
        add(trial, who);
        add(trial, host_and_command);
        return try_quietly(trial);
    };
    as_root = {"--unshare-user", "--uid", "0", "--gid", "0", "--cap-drop", "ALL", "--cap-add", "CAP_SETFCAP"};
    int const status = status_as(as_root);
    if (status == 0) {
        return Namespaces::available;
    }
    as_root = {"--cap-drop", "ALL", "--cap-add", "CAP_DAC_READ_SEARCH"};
    if (::geteuid() == 0 && status_as(as_root) == 0) {
        return Namespaces::available;
    }
    return status == 127 ? Namespaces::no_tool : Namespaces::refused;
}

Error become_bubblewrap(SandboxView const& view, Arguments const& as_root, bool private_network,
                        std::vector<std::string> const& command) {
    Arguments arguments{"bwrap"};
    add(arguments, as_root);
    if (private_network) {
        add(arguments, {"--unshare-net"});
    }
    add(arguments, {"--die-with-parent"});
    for (ViewStep const& step : view.steps) {
        add_step(arguments, step);
    }
    for (auto const& [name, value] : view.environment) {
        set_or_clear(arguments, name, value);
    }
    add(arguments, {"--chdir", view.working_directory, "--"});
    add(arguments, command);
    execute(arguments);
    return std::string("cannot run bwrap: ") + std::strerror(errno);
}

}  // namespace sim
