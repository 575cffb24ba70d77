// What the library keeps about each of its objects.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace sim {

struct Object {
    // What a class keeps besides: derive from it and hang it in `extra`.
    struct Extra {
        virtual ~Extra() = default;
    };

    // An object on the nodes `paths`, which must all be there at construction and at each operation. A null or
    // empty path is never there.
    explicit Object(std::vector<char const*> const& device_paths);
    Object(Object const&) = delete;
    Object& operator=(Object const&) = delete;

    // Whether the object could be opened and its nodes are there; otherwise sets errno. Lock held.
    bool ready() const;

    int const number;  // 1.. in the order of construction
    std::vector<std::string> const paths;
    std::string construction;  // the arguments of the constructor of base_t, for the journal
    int open_error = 0;        // errno of the construction
    bool announced = false;    // the construction has been through the gate
    bool dismissed = false;    // the destruction has
    std::unique_ptr<Extra> extra;
};

}  // namespace sim
