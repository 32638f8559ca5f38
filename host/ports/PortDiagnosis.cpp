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

using base::FailureKind;

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

/** The kind of failure for an error number of opening or configuring a port. */
FailureKind kindOf(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENODEV:
    case ENXIO:
        return FailureKind::PortMissing;
    case EACCES:
    case EPERM:
        return FailureKind::PortDenied;
    case EBUSY:
        return FailureKind::PortBusy;
    case EISDIR:
        return FailureKind::NotAPort;
    default:
        return FailureKind::PortFault;
    }
}

/** A failure with the system's own error text. */
base::Failure portFailure(FailureKind kind, std::string const& path, char const* what, int error) {
    return {kind, "the serial port " + path + " " + what + ": " + std::generic_category().message(error)};
}

} // namespace

base::Failure missingPort(std::string const& path) {
    return {FailureKind::PortMissing, "there is no serial port " + path};
}

base::Failure notATerminal(std::string const& path) {
    return {FailureKind::NotAPort, path + " is not a serial port"};
}

base::Failure noPermission(std::string const& path, DeviceAccess const& access) {
    std::string const text = "no permission to use the serial port " + path;
    if (access.everybody) {
        return {FailureKind::PortDenied, text + " although the permissions of the file allow it"};
    }
    if (access.groupMay) {
        return {FailureKind::PortDenied, text + ": it belongs to the group '" + access.group +
                                             "', so run 'sudo usermod -aG " + access.group +
                                             " $USER' and log in again"};
    }
    return {FailureKind::PortDenied, text + ": only its owner '" + access.owner + "' may use it"};
}

base::Failure busyPort(std::string const& path) {
    std::string const text = "the serial port " + path + " is in use";
    auto const holder = findHolder(path);
    if (!holder) {
        return {FailureKind::PortBusy, text + " by another program"};
    }
    std::string const process = "process " + std::to_string(holder->process);
    if (holder->process == getpid()) {
        return {FailureKind::PortBusy, text + " by this program itself (" + process + ")"};
    }
    return {FailureKind::PortBusy, text + " by '" + holder->program + "' (" + process + ")"};
}

base::Failure openFailure(std::string const& path, int error) {
    FailureKind const kind = kindOf(error);
    switch (kind) {
    case FailureKind::PortMissing:
        return missingPort(path);
    case FailureKind::PortBusy:
        return busyPort(path);
    case FailureKind::NotAPort:
        return notATerminal(path);
    case FailureKind::PortDenied:
        if (auto const access = deviceAccess(path)) {
            return noPermission(path, *access);
        }
        break;
    default:
        break;
    }
    return portFailure(kind, path, "cannot be opened", error);
}

base::Failure settingFailure(std::string const& path, int error) {
    if (error == EIO) {
        return {FailureKind::PortNoHardware, "there is no serial hardware at " + path};
    }
    return portFailure(kindOf(error), path, "cannot be set up", error);
}

} // namespace host
