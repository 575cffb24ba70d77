// Whether a command can be started: there is such a program, and what the kernel starts in its place is there.
#include "sim/tool/program_file.h"

#include <elf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "sim/core/error.h"
#include "sim/tool/exit_status.h"
#include "sim/tool/sandbox_view.h"

namespace sim {

namespace {

constexpr int kLongestChain = 5;  // of interpreters, as the kernel has it
constexpr std::size_t kLongestPath = 4096;

#if defined(__x86_64__)
constexpr int kMachines[] = {EM_X86_64, EM_386};
#else
constexpr int kMachines[] = {EM_AARCH64, EM_ARM};
#endif

// What the kernel starts in place of a program, and what that is to it; an empty path: nothing.
struct Starter {
    char const* what;
    std::string path;
};

template <typename T>
bool read_at(std::ifstream& file, std::streamoff place, T& value) {
    file.seekg(place);
    return static_cast<bool>(file.read(reinterpret_cast<char*>(&value), sizeof value));
}

template <typename Header, typename Segment>
std::string loader_in(std::ifstream& file) {
    Header header{};
    bool const is_ours = read_at(file, 0, header) &&
                         std::find(std::begin(kMachines), std::end(kMachines), header.e_machine) != std::end(kMachines);
    for (int i = 0; is_ours && i < header.e_phnum; ++i) {
        Segment segment{};
        if (!read_at(file, static_cast<std::streamoff>(header.e_phoff) + i * header.e_phentsize, segment)) {
            break;
        }
        if (segment.p_type == PT_INTERP && segment.p_filesz > 1 && segment.p_filesz <= kLongestPath) {
            std::string path(segment.p_filesz, '\0');
            file.seekg(static_cast<std::streamoff>(segment.p_offset));
            file.read(path.data(), static_cast<std::streamsize>(path.size()));
            return path.substr(0, path.find('\0'));
        }
    }
    return {};
}

Starter starter_of(std::string const& path) {
    std::ifstream file(path);
    unsigned char mark[EI_NIDENT]{};
    file.read(reinterpret_cast<char*>(mark), sizeof mark);
    file.clear();  // it may be shorter
    if (std::memcmp(mark, ELFMAG, SELFMAG) == 0) {
        return {"loader", mark[EI_CLASS] == ELFCLASS64 ? loader_in<Elf64_Ehdr, Elf64_Phdr>(file)
                                                       : loader_in<Elf32_Ehdr, Elf32_Phdr>(file)};
    }
    Starter script{"interpreter", {}};
    if (std::memcmp(mark, "#!", 2) == 0) {
        std::string line;
        file.seekg(2);
        std::getline(file, line);
        std::istringstream(line) >> script.path;
    }
    return script;
}

// Why the file cannot be started, with `name` in front.
Error why_not_startable(std::string const& name, std::string const& path) {
    std::string who = name;
    std::string program = path;
    for (int i = 0; i < kLongestChain; ++i) {
        Starter const starter = starter_of(program);
        if (starter.path.empty()) {
            return {};
        }
        who += std::string(": its ") + starter.what + " " + starter.path;
        if (::access(starter.path.c_str(), X_OK) != 0) {
            return who + ": " + std::strerror(errno);
        }
        program = starter.path;
    }
    return {};
}

}  // namespace

int check_command(std::string const& command) {
    std::string const path = program_path(command);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || ::access(path.c_str(), X_OK) != 0) {
        return errno == ENOENT ? fail(kNotFound, command + ": no such command")
                               : fail(kNotExecutable, command + ": " + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return fail(kNotExecutable, command + ": no program");
    }
    Error const error = why_not_startable(command, path);
    return error.empty() ? 0 : fail(kNotExecutable, error);
}

}  // namespace sim
