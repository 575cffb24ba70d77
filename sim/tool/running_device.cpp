// A device that runs in this process.
#include "sim/tool/running_device.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "sim/control/scenario.h"
#include "sim/tool/exit_status.h"

namespace sim {

namespace {

constexpr std::chrono::milliseconds kFarewell{2000};  // for the end of a program to be seen

bool is_device_file(std::string const& path) {
    auto const& files = device_files();
    return std::any_of(files.begin(), files.end(), [&](NodeFile const& file) { return file.path == path; });
}

Error set_clock(Device& device, std::string const& setting) {
    Reply const reply = device_commands().run({device}, "clock " + (setting.empty() ? "real" : setting));
    return reply.ok ? Error() : reply.text;
}

// As many as the host lets this process have: each connection needs one.
void take_all_descriptors() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace

Error check(DeviceOptions const& options) {
    for (std::string const& path : options.without) {
        if (!is_device_file(path)) {
            return path + " is no file of the device";
        }
    }
    Device device(std::make_unique<MemoryFileSystem>());
    Error error = set_clock(device, options.clock);
    Scenario scenario;
    return error.empty() && !options.scenario.empty() ? load_scenario(options.scenario, scenario, options.without)
                                                      : error;
}

RunningDevice::~RunningDevice() {
    if (server_) {
        service_->stop();  // ends the device's time, for which a command may be waiting
        server_->stop();
        tell_lost_lines();
    }
}

// The last chance of the journal's file, and of whoever reads it.
void RunningDevice::tell_lost_lines() {
    Journal& journal = device_->access()->journal;
    journal.tell_lost();
    if (journal.lost() > 0) {
        fail(kFailed, "the journal " + options_.journal + " lacks its last " + std::to_string(journal.lost()) +
                          " lines, which could not be written");
    }
}

Error RunningDevice::prepare() {
    return directory_.make(options_.name.empty() ? std::to_string(::getpid()) : options_.name);
}

Error RunningDevice::start() {
    take_all_descriptors();
    std::signal(SIGPIPE, SIG_IGN);  // what a journal's file does not take is counted
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return start_parts();
    } catch (std::system_error const& error) {
        return std::string("cannot start a thread of the device: ") + error.what();
    }
}

Error RunningDevice::start_parts() {
    device_ = std::make_unique<Device>(std::make_unique<HostFileSystem>(device_files_root(directory())));
    service_ = std::make_unique<Service>(*device_);
    server_ = std::make_unique<Server>(*device_, device_commands(), this);
    Error error = device_->access()->nodes.restore_all(options_.without);
    if (error.empty() && !options_.journal.empty()) {
        error = device_->access()->journal.open(options_.journal, options_.journal_as_json);
    }
    if (error.empty() && !options_.scenario.empty()) {
        error = load_scenario(options_.scenario, scenario_, options_.without);
    }
    if (error.empty()) {
        error = start_scenario(scenario_, *device_, [this](Error const& failure) { end_on(failure); });
    }
    if (error.empty()) {
        error = set_clock(*device_, options_.clock);
    }
    if (error.empty()) {
        error = service_->start(calls_socket(directory()));
    }
    return error.empty() ? server_->start(control_socket(directory())) : error;
}

// What the commands and programs are about to do is not waited for.
void RunningDevice::end_on(Error const& error) const {
    fail(kFailed, "scenario " + error);
    directory_.remove();
    std::_Exit(kFailed);
}

std::vector<std::string> RunningDevice::unmet_faults() {
    std::vector<std::string> faults = device_->access()->faults.never_fired();
    std::vector<std::string> const lines = lines_that_never_came({"fault", "add"});
    faults.insert(faults.end(), lines.begin(), lines.end());
    return faults;
}

std::vector<std::string> RunningDevice::unmet_expectations() {
    return lines_that_never_came({"expect"});
}

// Of those that begin with these words.
std::vector<std::string> RunningDevice::lines_that_never_came(Words const& begin) {
    auto const device = device_->access();
    std::vector<std::string> lines;
    for (ScenarioLine const& line : scenario_) {
        Words words;
        bool const begins_so = split_words(line.command, words) && words.size() > begin.size() &&
                               std::equal(begin.begin(), begin.end(), words.begin());
        if (begins_so && line.due.value_or(Time(0)) > device.now()) {
            lines.push_back("line " + std::to_string(line.number) +
                            " of the scenario, which never came:" + line.command);
        }
    }
    return lines;
}

void RunningDevice::wait_until_unused() {
    service_->wait_until_unused(kFarewell);
}

std::vector<std::string> RunningDevice::connected() {
    std::vector<std::string> lines;
    for (ProgramInfo const& program : service_->programs()) {
        lines.push_back(program.name + "  pid " + std::to_string(program.pid) + "  objects " +
                        std::to_string(program.objects));
    }
    return lines;
}

int run_device(DeviceOptions const& options) {
    Error error = check(options);
    if (!error.empty()) {
        return fail(kNotUnderstood, error);
    }
    sigset_t ending;
    sigemptyset(&ending);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&ending, signal);
    }
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    RunningDevice device(options);
    error = device.prepare();
    if (error.empty()) {
        error = device.start();
    }
    if (!error.empty()) {
        return fail(kFailed, error);
    }
    std::printf("device %s\n", device.directory().c_str());
    std::fflush(stdout);
    int signal = 0;
    sigwait(&ending, &signal);
    return 0;
}

}  // namespace sim
