#pragma once

#include "base/Result.h"

#include <string>

namespace host {

/** Who may use a device. */
struct DeviceAccess {
    std::string owner;      ///< user name, or the number when it has none
    std::string group;      ///< group name, or the number when it has none
    bool groupMay = false;  ///< members of the group can read and write
    bool everybody = false; ///< everybody else can, too
};

/** Why a serial port cannot be used, as one sentence that says what to do about it. */
base::Failure missingPort(std::string const& path);
base::Failure notATerminal(std::string const& path);
base::Failure noPermission(std::string const& path, DeviceAccess const& access);

/** Names the program that holds the port when it can be found. The caller must not hold it open itself. */
base::Failure busyPort(std::string const& path);

/** Why open() of a port failed, from its error number. */
base::Failure openFailure(std::string const& path, int error);

/** Why an operation on an open port failed, from its error number. */
base::Failure settingFailure(std::string const& path, int error);

} // namespace host
