// Operations of a module that may be missing.
#pragma once

namespace sim {

// Asks the module as it is now; refused where it cannot be reached.
template <typename Component, typename Operation>
int ask(Component& module, Operation operation) {
    return module.answer() == 0 ? operation(module) : -1;
}

// For what the module itself cannot refuse.
template <typename Component, typename Operation>
int done(Component& module, Operation operation) {
    return ask(module, [&](Component& there) {
        operation(there);
        return 0;
    });
}

}  // namespace sim
