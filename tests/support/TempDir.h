#pragma once

#include "tests/support/Bytes.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace velktest {

/** A separate directory for one test; it is removed with its content. */
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "velk-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        path_ = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string Path() const { return path_; }
    std::string Path(std::string const& name) const { return path_ + "/" + name; }
    bool Has(std::string const& name) const { return std::filesystem::exists(Path(name)); }

    void Put(std::string const& name, Bytes const& bytes) const {
        std::filesystem::remove(Path(name)); // some file systems wait for the disk when a file is truncated
        std::ofstream file(Path(name), std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    Bytes Get(std::string const& name) const {
        std::ifstream file(Path(name), std::ios::binary);
        Bytes bytes;
        for (auto it = std::istreambuf_iterator<char>(file); it != std::istreambuf_iterator<char>(); ++it) {
            bytes.push_back(static_cast<unsigned char>(*it));
        }
        return bytes;
    }

private:
    std::string path_;
};

/** How many times this process has @p path open. */
inline int OpenHandles(std::string const& path) {
    int handles = 0;
    std::error_code ignored;
    for (auto const& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        if (std::filesystem::read_symlink(entry.path(), ignored) == path) {
            ++handles;
        }
    }
    return handles;
}

} // namespace velktest
