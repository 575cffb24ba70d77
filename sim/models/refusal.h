// How a model refuses an operation.
#pragma once

#include <cerrno>

namespace sim {

// The status of a refusal, its reason in errno.
inline int refuse(int reason) {
    errno = reason;
    return -1;
}

}  // namespace sim
