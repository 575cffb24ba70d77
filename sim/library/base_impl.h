// The library's side of hal::base_t, shared by the classes that derive from it.
#pragma once

#include "hal/base.h"
#include "sim/library/object.h"

struct hal::base_t::impl : sim::Object {
    virtual ~impl() = default;
};

namespace sim {

// Members of base_t that only its derived classes may name.
struct BaseAccess : hal::base_t {
    using Impl = hal::base_t::impl;
    static Object const& object_of(hal::base_t const& object) { return *(object.*(&BaseAccess::impl_)); }
};

}  // namespace sim
