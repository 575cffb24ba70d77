// The sandbox by tracing, made with proot: for hosts without namespaces.
#include "sim/tool/proot.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "sim/tool/execute.h"

namespace sim {

char const* const kInsideProot = "--inside-proot";

namespace {

namespace fs = std::filesystem;
using Kind = ViewStep::Kind;

std::string const kTemporary = "/tmp";  // proot's, which cannot be told another
constexpr int kMostTries = 100;
constexpr unsigned int kRetryUs = 10000;

struct Binding {
    std::string host;
    std::string path;
};

// The sandbox's root directory, with what is its own and a place for each thing of the host.
class Tree {
public:
    explicit Tree(fs::path root) : root_(std::move(root)) {}

    // Throws std::system_error.
    void add(ViewStep const& step) {
        fs::path const own = root_ / fs::path(step.path).relative_path();
        switch (step.kind) {
            case Kind::read_only:
            case Kind::writable:
                return bind(step);
            case Kind::link:
                return fs::create_symlink(step.content, own);
            case Kind::devices:
                return add_devices();
            case Kind::directory:
                fs::create_directories(own);
                return;
            case Kind::scratch:
                fs::create_directories(own);
                return fs::permissions(own, fs::perms(01777));
            case Kind::device_file:
                make_file(own, step.content);
                return fs::permissions(own, fs::perms(0600));
        }
    }

    std::vector<Binding> const& bindings() const { return bindings_; }
    // What of the host may be written.
    std::vector<std::string> const& writable() const { return writable_; }

private:
    static void make_file(fs::path const& path, std::string const& content) {
        fs::create_directories(path.parent_path());
        std::ofstream(path) << content;
    }

    void bind(ViewStep const& step) {
        if (!fs::exists(step.content)) {
            return;
        }
        if (step.kind == Kind::writable) {
            writable_.push_back(step.content);
        }
        auto const same = [&](Binding const& binding) { return shows(binding, step); };
        if (std::any_of(bindings_.begin(), bindings_.end(), same)) {
            return;
        }
        fs::path const own = root_ / fs::path(step.path).relative_path();
        if (fs::is_directory(step.content)) {
            fs::create_directories(own);
        } else {
            make_file(own, "");
        }
        bindings_.push_back({step.content, step.path});
    }

    // Whether the step's part of the host is to be seen where the step wants it.
    static bool shows(Binding const& binding, ViewStep const& step) {
        std::string const below = binding.path + "/";
        return binding.host == binding.path && step.content == step.path &&
               (step.path == binding.path || step.path.compare(0, below.size(), below) == 0);
    }

    void add_devices() {
        for (char const* name : {"null", "zero", "full", "random", "urandom", "tty", "ptmx", "pts"}) {
            std::string const path = std::string("/dev/") + name;
            bind({Kind::writable, path, path});
        }
        fs::path const own = root_ / "dev";
        fs::create_directories(own / "shm");
        fs::permissions(own / "shm", fs::perms(01777));
        fs::create_symlink("/proc/self/fd", own / "fd");
        fs::create_symlink("/proc/self/fd/0", own / "stdin");
        fs::create_symlink("/proc/self/fd/1", own / "stdout");
        fs::create_symlink("/proc/self/fd/2", own / "stderr");
    }

    fs::path root_;
    std::vector<Binding> bindings_;
    std::vector<std::string> writable_;
};

// A new private directory, and a process that removes it as soon as this process has ended, in whatever way.
class PrivateDirectory {
public:
    // Throws std::system_error.
    PrivateDirectory() : path_(kTemporary + "/r47-sim-XXXXXX") {
        std::array<int, 2> ends{};
        if (::mkdtemp(path_.data()) == nullptr || ::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), path_);
        }
        cleaner_ = ::fork();
        if (cleaner_ == 0) {
            ::setsid();  // no signal of the terminal's is for it
            ::dup2(ends[0], 0);
            ::closefrom(1);
            clean_in_the_end();
            ::_exit(0);
        }
        ::close(ends[0]);
        life_ = ends[1];
    }
    PrivateDirectory(PrivateDirectory const&) = delete;
    PrivateDirectory& operator=(PrivateDirectory const&) = delete;
    ~PrivateDirectory() {
        ::close(life_);
        wait_for(cleaner_);
    }

    // proot leaves files that are named after its process when it is killed.
    void remember_proot(pid_t pid) const { (void)!::write(life_, &pid, sizeof pid); }

    std::string const& path() const { return path_; }

private:
    void clean_in_the_end() const {
        pid_t proot = -1;
        ssize_t count = 0;
        for (pid_t pid = -1; (count = ::read(0, &pid, sizeof pid)) != 0;) {
            proot = count > 0 ? pid : proot;
        }
        // What is being killed may still make a file.
        for (int tries = 0; tries < kMostTries; ++tries) {
            std::error_code error;
            fs::remove_all(path_, error);
            if (!error) {
                break;
            }
            ::usleep(kRetryUs);
        }
        std::string const left = "prooted-" + std::to_string(proot) + "-";
        std::error_code ignored;
        for (fs::directory_entry const& entry : fs::directory_iterator(kTemporary, ignored)) {
            if (entry.path().filename().string().compare(0, left.size(), left) == 0) {
                fs::remove(entry.path(), ignored);
            }
        }
    }

    std::string path_;
    int life_ = -1;  // the cleaner reads its end
    pid_t cleaner_ = -1;
};

void die_with(pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(1);
    }
}

Arguments arguments_of(SandboxView const& view, Tree const& tree, std::string const& root,
                       std::vector<std::string> const& command) {
    Arguments arguments{"proot", "-v", "-1", "-r", root};  // quiet: that a signal ended the command is no news
    if (::geteuid() != 0) {
        arguments.push_back("-0");
    }
    for (Binding const& binding : tree.bindings()) {
        arguments.insert(arguments.end(), {"-b", binding.host + ":" + binding.path});
    }
    arguments.insert(arguments.end(), {"-w", view.working_directory});
    arguments.insert(arguments.end(), {program_path(program_invocation_name), kInsideProot});
    arguments.insert(arguments.end(), command.begin(), command.end());
    return arguments;
}

void set_environment(SandboxView const& view) {
    for (auto const& [name, value] : view.environment) {
        if (value.empty()) {
            ::unsetenv(name.c_str());
        } else {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
}

}  // namespace

Tracing try_tracing(Rights& rights) {
    int status = 0;
    for (Rights const left : {Rights::none, Rights::read_all}) {
        rights = left;
        status =
            try_quietly({"proot", "test", "-r", program_path(program_invocation_name)}, [&] { give_up_rights(left); });
        if (status == 0) {
            return Tracing::available;
        }
    }
    return status == 127 ? Tracing::no_tool : Tracing::refused;
}

Error become_proot(SandboxView const& view, Rights rights, std::vector<std::string> const& command) {
    int status = 1;
    try {
        PrivateDirectory const root;
        Tree tree(root.path());
        for (ViewStep const& step : view.steps) {
            tree.add(step);
        }
        pid_t const self = ::getpid();
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        pid_t const child = ::fork();
        if (child == 0) {
            die_with(self);
            std::vector<std::string> writable = tree.writable();
            writable.push_back(kTemporary);
            confine(writable);
            give_up_rights(rights);
            set_environment(view);
            execute(arguments_of(view, tree, root.path(), command));
            std::fprintf(stderr, "r47-sim: cannot run proot: %s\n", std::strerror(errno));
            ::_exit(1);
        }
        root.remember_proot(child);
        for (int const number : {SIGINT, SIGQUIT}) {
            std::signal(number, SIG_IGN);  // the terminal's are for the command, and the files go after it
        }
        status = child > 0 ? wait_for(child) : status;
    } catch (std::system_error const& error) {
        return std::string("cannot make the sandbox's files: ") + error.what();
    }
    ::_exit(status);
}

int run_inside_proot(std::vector<std::string> const& command) {
    pid_t const parent = ::getppid();
    die_with(parent);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    pid_t const self = ::getpid();
    pid_t const child = ::fork();
    if (child == 0) {
        die_with(self);
        execute(command);
        std::fprintf(stderr, "r47-sim: cannot run %s: %s\n", command.front().c_str(), std::strerror(errno));
        ::_exit(1);
    }
    for (int const number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        std::signal(number, SIG_IGN);  // they are for the command; its status is told
    }
    int result = 1;
    int status = 0;
    for (pid_t ended = 0; (ended = ::waitpid(-1, &status, 0)) > 0 || errno == EINTR;) {
        if (ended == child) {
            result = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
    }
    return result;
}

}  // namespace sim
