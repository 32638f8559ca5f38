#pragma once

#include <filesystem>
#include <system_error>

namespace hosttest {

/** Makes a folder the current one during its lifetime. */
class CurrentFolder {
public:
    explicit CurrentFolder(std::filesystem::path const& folder) : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ~CurrentFolder() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
    }
    CurrentFolder(CurrentFolder const&) = delete;
    CurrentFolder& operator=(CurrentFolder const&) = delete;

private:
    std::filesystem::path before_;
};

} // namespace hosttest
