// A place on an image sensor.
#pragma once

namespace sim {

// Counted from the upper left corner.
struct Pixel {
    unsigned int x;
    unsigned int y;

    friend bool operator==(Pixel const& one, Pixel const& other) { return one.x == other.x && one.y == other.y; }
    friend bool operator!=(Pixel const& one, Pixel const& other) { return !(one == other); }
};

}  // namespace sim
