// The library's side of hal::base_t, shared by the classes that derive from it.
#pragma once

#include <vector>

#include "hal/base.h"
#include "sim/library/object.h"
#include "sim/library/text.h"

struct hal::base_t::impl : sim::Object {
    using Object::Object;
};

namespace sim {

// The library's side of another object of it.
Object& object_of(hal::base_t const& object);
ObjectNumber number_of(hal::base_t const& object);
// The nodes of another object, for one that works through it.
std::vector<char const*> paths_of(hal::base_t const& object);

}  // namespace sim
