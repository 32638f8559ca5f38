#include "host/ports/PortHolder.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <system_error>

namespace host {

namespace fs = std::filesystem;

namespace {

/** The process number that a directory is named after, or nothing. */
std::optional<int> processNumber(fs::path const& directory) {
    std::string const name = directory.filename().string();
    int number = 0;
    auto const parsed = std::from_chars(name.data(), name.data() + name.size(), number);
    bool const whole = parsed.ec == std::errc{} && parsed.ptr == name.data() + name.size();
    return whole ? std::optional(number) : std::nullopt;
}

bool isDevice(fs::path const& path, struct stat const& device) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) && status.st_rdev == device.st_rdev &&
           status.st_dev == device.st_dev;
}

bool holds(fs::path const& process, struct stat const& device) {
    std::error_code error;
    fs::directory_iterator files(process / "fd", error); // fails for the programs of other users
    for (; !error && files != fs::directory_iterator(); files.increment(error)) {
        if (isDevice(files->path(), device)) {
            return true;
        }
    }
    return false;
}

std::string programName(fs::path const& process) {
    std::string name;
    std::ifstream file(process / "comm");
    std::getline(file, name);
    return name;
}

} // namespace

std::optional<PortHolder> findHolder(std::string const& path, std::string const& processes) {
    struct stat device {};
    if (stat(path.c_str(), &device) != 0 || !S_ISCHR(device.st_mode)) {
        return std::nullopt;
    }
    std::error_code error;
    fs::directory_iterator entries(processes, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        auto const process = processNumber(entries->path());
        if (process && holds(entries->path(), device)) {
            return PortHolder{*process, programName(entries->path())};
        }
    }
    return std::nullopt;
}

} // namespace host
