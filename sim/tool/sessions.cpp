// The processes of a session, as the kernel tells them.
#include "sim/tool/sessions.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>

#include "sim/core/descriptor.h"
#include "sim/core/numbers.h"

namespace sim {

namespace {

struct ProcessStatus {
    char state = 0;
    pid_t session = 0;
    double processor = 0;  // seconds
};

std::string file_of(pid_t process, char const* name) {
    return "/proc/" + std::to_string(process) + "/" + name;
}

std::optional<ProcessStatus> status_of(pid_t process) {
    std::ifstream file(file_of(process, "stat"));
    std::string text;
    std::getline(file, text);
    std::size_t const name_end = text.rfind(')');  // a name may hold blanks and brackets
    if (name_end == std::string::npos) {
        return std::nullopt;
    }
    std::istringstream fields(text.substr(name_end + 1));
    ProcessStatus status;
    std::string skipped;
    pid_t number = 0;
    fields >> status.state >> number >> number >> status.session;
    for (int i = 0; i < 7; ++i) {
        fields >> skipped;
    }
    double user = 0;
    double system = 0;
    fields >> user >> system;
    status.processor = (user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
    return fields ? std::optional<ProcessStatus>(status) : std::nullopt;
}

double memory_of(pid_t process) {
    std::ifstream file(file_of(process, "smaps_rollup"));
    for (std::string line; std::getline(file, line);) {
        double kilobytes = 0;
        if (std::sscanf(line.c_str(), "Pss: %lf", &kilobytes) == 1) {
            return kilobytes * 1024;
        }
    }
    return 0;
}

}  // namespace

std::vector<pid_t> processes_of_session(pid_t session) {
    std::vector<pid_t> processes;
    std::error_code ended;  // while it is looked at
    for (std::filesystem::directory_iterator entry("/proc", ended), end; !ended && entry != end;
         entry.increment(ended)) {
        auto const process = parse_integer_as<pid_t>(entry->path().filename().string());
        auto const status = process ? status_of(*process) : std::nullopt;
        if (status && status->session == session && status->state != 'Z') {
            processes.push_back(*process);
        }
    }
    return processes;
}

Usage usage_of_session(pid_t session) {
    Usage usage;
    for (pid_t const process : processes_of_session(session)) {
        usage.memory += memory_of(process);
        usage.processor += status_of(process).value_or(ProcessStatus()).processor;
    }
    return usage;
}

bool session_listens(pid_t session, unsigned short port) {
    std::array<char, 64> listening{};
    std::snprintf(listening.data(), listening.size(), " 00000000:%04X 00000000:0000 0A ", port);
    for (pid_t const process : processes_of_session(session)) {
        std::ifstream file(file_of(process, "net/tcp"));
        for (std::string line; std::getline(file, line);) {
            if (line.find(listening.data()) != std::string::npos) {
                return true;
            }
        }
    }
    return false;
}

bool ends_within(pid_t process, std::chrono::milliseconds longest) {
    Descriptor const opened(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    pollfd ended{opened.get(), POLLIN, 0};
    return !opened || ::poll(&ended, 1, static_cast<int>(longest.count())) == 1;
}

}  // namespace sim
