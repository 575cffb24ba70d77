// Serves the front panel of a device on the loopback: the page, what it is told, and what it commands.
#pragma once

#include <memory>
#include <string>

#include "sim/core/error.h"

namespace sim {

class PanelServer {
public:
    // `device`: its name or directory; empty: the only one of this user. It need not run yet.
    explicit PanelServer(std::string device);
    PanelServer(PanelServer const&) = delete;
    PanelServer& operator=(PanelServer const&) = delete;
    ~PanelServer();

    // Takes the port, 0: any that is free. Starts no thread. Once.
    Error listen(int port);
    // The page's address, for a person; it has the token in it, anew each time.
    std::string const& address() const;
    // Serves from now on, on threads of its own. Once.
    void start();

private:
    struct Parts;

    std::unique_ptr<Parts> parts_;
};

}  // namespace sim
