// The files by which programs find the device: its nodes, its GPIO value file and its firmware files.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hal/types.h"
#include "sim/device/properties.h"

namespace sim {

struct NodeFile {
    std::string path;
    std::string content;
};

// All files of a whole device, with what is in them.
std::vector<NodeFile> const& device_files();

// The files that a device sees. Whether a node is there, the files alone tell.
class FileSystem {
public:
    virtual ~FileSystem() = default;
    virtual bool readable(std::string const& path) const = 0;
    // These answer an error message; empty: done.
    virtual Error remove(std::string const& path) = 0;
    virtual Error write(NodeFile const& file) = 0;
};

// Files below the directory `root`, which is the device's own: what programs see as its files.
class HostFileSystem : public FileSystem {
public:
    explicit HostFileSystem(std::string root) : root_(std::move(root)) {}
    bool readable(std::string const& path) const override;
    Error remove(std::string const& path) override;
    Error write(NodeFile const& file) override;

private:
    std::string root_;
};

// Files in memory, at first those of a whole device but `missing`.
class MemoryFileSystem : public FileSystem {
public:
    explicit MemoryFileSystem(std::vector<std::string> const& missing = {});
    bool readable(std::string const& path) const override;
    Error remove(std::string const& path) override;
    Error write(NodeFile const& file) override;

private:
    std::vector<std::string> paths_;
};

class Nodes {
public:
    explicit Nodes(std::unique_ptr<FileSystem> files) : files_(std::move(files)) {}

    bool present(std::string const& path) const { return !path.empty() && files_->readable(path); }
    // The sensor whose node is there; IMX296 when both are.
    hal::imx_te fitted_sensor() const;

    // Only files of the device. Removing what is gone, or restoring what is
    // there, is an error.
    Error remove(std::string const& path);
    Error restore(std::string const& path);
    // How often remove() took the file away: who finds another number has not had it all the time.
    unsigned long removals(std::string const& path) const;
    // Puts all files of the device there, but `missing`.
    Error restore_all(std::vector<std::string> const& missing);
    // One line a file: path, present or missing.
    std::string list() const;

private:
    std::unique_ptr<FileSystem> files_;
    std::map<std::string, unsigned long> removals_;
};

}  // namespace sim
