#include "host/ports/PortDiagnosis.h"

#include "host/ports/PortHolder.h"

#include <array>
#include <cerrno>
#include <grp.h>
#include <optional>
#include <pwd.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace host {

namespace {

constexpr std::size_t kNameBuffer = 16'384; ///< for one entry of the user or group data base

std::string userName(uid_t user) {
    std::array<char, kNameBuffer> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return found->pw_name;
    }
    return std::to_string(user);
}

std::string groupName(gid_t group) {
    std::array<char, kNameBuffer> buffer{};
    struct group entry {};
    struct group* found = nullptr;
    if (getgrgid_r(group, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return found->gr_name;
    }
    return std::to_string(group);
}

std::optional<DeviceAccess> deviceAccess(std::string const& path) {
    constexpr mode_t kGroupMay = S_IRGRP | S_IWGRP;
    constexpr mode_t kEverybody = S_IROTH | S_IWOTH;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return DeviceAccess{userName(status.st_uid), groupName(status.st_gid), (status.st_mode & kGroupMay) == kGroupMay,
                        (status.st_mode & kEverybody) == kEverybody};
}

base::Failure portFailure(std::string const& path, char const* what, int error) {
    return base::hostFailure("the serial port " + path + " " + what + ": " + std::generic_category().message(error));
}

} // namespace

base::Failure missingPort(std::string const& path) {
    return base::hostFailure("there is no serial port " + path);
}

base::Failure notATerminal(std::string const& path) {
    return base::hostFailure(path + " is not a serial port");
}

base::Failure noPermission(std::string const& path, DeviceAccess const& access) {
    std::string const text = "no permission to use the serial port " + path;
    if (access.everybody) {
        return base::hostFailure(text + " although its own access rights allow it");
    }
    if (access.groupMay) {
        return base::hostFailure(text + ": it belongs to the group '" + access.group + "', so run 'sudo usermod -aG " +
                                 access.group + " $USER' and log in again");
    }
    return base::hostFailure(text + ": only its owner '" + access.owner + "' may use it");
}

base::Failure busyPort(std::string const& path) {
    std::string const text = "the serial port " + path + " is in use";
    auto const holder = findHolder(path);
    if (!holder) {
        return base::hostFailure(text + " by another program");
    }
    std::string const process = "process " + std::to_string(holder->process);
    if (holder->process == getpid()) {
        return base::hostFailure(text + " by this program itself (" + process + ")");
    }
    return base::hostFailure(text + " by '" + holder->program + "' (" + process + ")");
}

base::Failure openFailure(std::string const& path, int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENODEV:
    case ENXIO:
        return missingPort(path);
    case EACCES:
    case EPERM:
        if (auto const access = deviceAccess(path)) {
            return noPermission(path, *access);
        }
        return portFailure(path, "cannot be opened", error);
    case EBUSY:
        return busyPort(path);
    case EISDIR:
        return notATerminal(path);
    default:
        return portFailure(path, "cannot be opened", error);
    }
}

base::Failure settingFailure(std::string const& path, int error) {
    if (error == EIO) {
        return base::hostFailure("there is no serial hardware behind " + path);
    }
    return portFailure(path, "cannot be set up", error);
}

} // namespace host
