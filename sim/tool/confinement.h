// What a program is kept from where proot, which can only redirect, would let it through.
#pragma once

#include <string>
#include <vector>

namespace sim {

// What is left of root's rights.
enum class Rights {
    none,     // what is not root's own, or nobody may read, is out of reach
    read_all  // but every file may be read
};

// Gives up root's other rights, in the next program that this process executes.
void give_up_rights(Rights left);

// From now on this process and all that it starts
// - change files of the host below `writable` only, as far as the kernel knows Landlock;
// - get ENOSYS from the system calls that are newer than proot and would see the host's paths: the C library then makes
//   the older ones, which proot redirects.
// They gain no rights by set-user-ID programs either.
void confine(std::vector<std::string> const& writable);

}  // namespace sim
