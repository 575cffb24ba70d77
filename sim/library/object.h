// What the library keeps about each of its objects.
#pragma once

namespace sim {

struct Object {
    unsigned int number = 0;  // on the device; 0: it is not there
};

}  // namespace sim
