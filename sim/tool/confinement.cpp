// What a program is kept from where proot, which can only redirect, would let it through.
#include "sim/tool/confinement.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace sim {

namespace {

constexpr std::uint64_t kWriteFile = LANDLOCK_ACCESS_FS_WRITE_FILE;
constexpr std::uint64_t kTruncate = 1ULL << 14U;  // newer than Debian's header
constexpr std::uint64_t kChangeDirectory =
    LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
    LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK |
    LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
constexpr long kVersionWithRefer = 2;
constexpr long kVersionWithTruncate = 3;

void allow(int ruleset, std::string const& path, std::uint64_t access) {
    landlock_path_beneath_attr rule{};
    rule.parent_fd = ::open(path.c_str(), O_PATH | O_CLOEXEC);
    struct stat status {};
    if (rule.parent_fd < 0 || ::fstat(rule.parent_fd, &status) != 0) {
        return;
    }
    rule.allowed_access = S_ISDIR(status.st_mode) ? access : access & (kWriteFile | kTruncate);
    ::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    ::close(rule.parent_fd);
}

void protect_host(std::vector<std::string> const& writable) {
    long const version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    std::uint64_t access = kWriteFile | kChangeDirectory;
    access |= version >= kVersionWithRefer ? LANDLOCK_ACCESS_FS_REFER : 0;
    access |= version >= kVersionWithTruncate ? kTruncate : 0;
    landlock_ruleset_attr const attributes{access};
    auto const ruleset = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
    if (ruleset < 0) {
        return;
    }
    for (std::string const& path : writable) {
        allow(ruleset, path, access);
    }
    ::syscall(SYS_landlock_restrict_self, ruleset, 0);
    ::close(ruleset);
}

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kArchitecture = 0;  // no call is touched
#endif

// Those with paths, and the one that hides from proot what a new process shares. Numbers, as some are newer than
// Debian's headers; since 5.1 they are the same on every processor.
constexpr std::uint32_t kNewCalls[] = {
    SYS_statx, SYS_execveat, 435 /* clone3 */, 437 /* openat2 */, 439 /* faccessat2 */, 452 /* fchmodat2 */,
};

void answer_as_an_older_kernel() {
    std::vector<sock_filter> filter{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    for (std::uint32_t const number : kNewCalls) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    sock_fprog const program{static_cast<unsigned short>(filter.size()), filter.data()};
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

}  // namespace

void give_up_rights(Rights left) {
    // A program of root's gets what the bounding set has. Without CAP_SETPCAP all stays as it is.
    for (unsigned long right = 0; ::prctl(PR_CAPBSET_READ, right) >= 0; ++right) {
        if (right != CAP_DAC_READ_SEARCH || left != Rights::read_all) {
            ::prctl(PR_CAPBSET_DROP, right);
        }
    }
}

void confine(std::vector<std::string> const& writable) {
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    protect_host(writable);
    answer_as_an_older_kernel();
}

}  // namespace sim
