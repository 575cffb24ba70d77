// Shell commands, and what they print.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

struct Result {
    int status;
    std::string output;
};

// Runs a shell command; standard error goes with the output.
inline Result shell(std::string const& command) {
    FILE* const pipe = ::popen(("exec 2>&1; " + command).c_str(), "r");
    std::string output;
    std::array<char, 4096> bytes{};
    for (std::size_t count = 0; (count = std::fread(bytes.data(), 1, bytes.size(), pipe)) > 0;) {
        output.append(bytes.data(), count);
    }
    int const status = ::pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

inline std::string read(std::string const& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline bool host_allows_namespaces() {
    return shell("bwrap --unshare-user-try --ro-bind / / true").status == 0;
}
constexpr char const* kNoNamespaces = "this host allows no namespaces";
