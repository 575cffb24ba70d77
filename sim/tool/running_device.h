// A device that runs in this process.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "sim/control/command.h"
#include "sim/control/device_directory.h"
#include "sim/control/scenario.h"
#include "sim/control/server.h"
#include "sim/service/service.h"

namespace sim {

struct DeviceOptions {
    std::string name;                  // or directory, with a slash; empty: as the process
    std::vector<std::string> without;  // files of the device to leave out
    std::string journal;               // a file; empty: none
    bool journal_as_json = false;
    std::string scenario;  // a file; empty: none
    std::string clock;     // empty: real
};

// Found before anything is started, what is wrong with them.
Error check(DeviceOptions const& options);

class RunningDevice : public ProgramList {
public:
    explicit RunningDevice(DeviceOptions options) : options_(std::move(options)) {}
    ~RunningDevice() override;

    // Makes the directory with the device's files. Starts no thread.
    Error prepare();
    // Starts the device: from now on programs and commands are served.
    Error start();
    std::string const& directory() const { return directory_.path(); }
    // The fault rules that never fired, and the lines of the scenario that would have added one but never came.
    std::vector<std::string> unmet_faults();
    // The expectations of the scenario that nobody looked at, as their time never came.
    std::vector<std::string> unmet_expectations();
    // Gives the programs that have ended the time to be seen.
    void wait_until_unused();

private:
    std::vector<std::string> lines_that_never_came(Words const& begin);
    std::vector<std::string> connected() override;
    std::vector<std::string> waited_for() override { return service_->waited_for(); }
    Error start_parts();
    void tell_lost_lines();
    [[noreturn]] void end_on(Error const& error) const;

    DeviceOptions const options_;
    DeviceDirectory directory_;
    Scenario scenario_;
    std::unique_ptr<Device> device_;
    std::unique_ptr<Service> service_;
    std::unique_ptr<Server> server_;
};

// "r47-sim device": runs a device until SIGINT, SIGTERM or SIGHUP. Answers the exit status.
int run_device(DeviceOptions const& options);

}  // namespace sim
