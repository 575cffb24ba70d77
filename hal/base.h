// What every module of the device can be asked: its status and its revision.
#pragma once

#include "hal/types.h"

namespace hal {

// Operations of the whole library, unless their comment says otherwise:
// - they return an int status, 0 for success; on failure errno is set and the out-arguments keep
//   what they held;
// - they may block for the length of one transfer to the device, and may be called from any thread.
class base_t {
public:
    // Opens the device node. `access` is handed to the driver; the console always passes 2. A node that
    // cannot be opened is not reported here: every later operation of the object then fails.
    base_t(char const* device, int access);
    base_t(base_t const&) = delete;
    base_t& operator=(base_t const&) = delete;
    virtual ~base_t();

    // The module's status byte. A negative result means failure.
    virtual int get_status(unsigned char& status) const;
    // The module's revision. A negative result means failure.
    virtual int get_revision(revision_t& revision) const;

protected:
    struct impl;
    explicit base_t(impl* opened);  // for the library's own classes, which open the node in their way
    impl* impl_;                    // the library's own; the console never looks inside
};

}  // namespace hal
