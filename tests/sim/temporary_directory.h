// A private directory that lasts as long as its test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "r47-sim-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        path_ = name;
    }
    TemporaryDirectory(TemporaryDirectory const&) = delete;
    TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::string const& path() const { return path_; }

private:
    std::string path_;
};
