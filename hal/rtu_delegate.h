// A second, read-only door to the real-time unit.
#pragma once

#include "hal/types.h"

namespace hal {

class rtu_delegate_t {
public:
    // Opens the real-time unit's node; `access` as for base_t.
    rtu_delegate_t(char const* device, int access);
    rtu_delegate_t(rtu_delegate_t const&) = delete;
    rtu_delegate_t& operator=(rtu_delegate_t const&) = delete;
    ~rtu_delegate_t();

    int get_status(unsigned char& status) const;
    int get_revision(revision_t& revision) const;
    // Time after the last heartbeat after which the unit takes the software for dead, in milliseconds.
    int get_heartbeat_timeout(unsigned int& timeout_ms) const;

private:
    struct impl;
    impl* impl_;
};

}  // namespace hal
