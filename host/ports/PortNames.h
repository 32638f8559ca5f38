#pragma once

#include <map>
#include <optional>
#include <string>

namespace host {

/**
 * Maps configured port names to devices.
 *
 * "com1" to "com16", in upper or lower case, mean /dev/ttyS0 to /dev/ttyS15 unless set otherwise. A name that contains
 * a "/" is the path of a device. Any other name is that of a device in /dev or, when there is none, in the current
 * folder, such as a link to a pseudo-terminal. One that begins with "tty" means a device in /dev even if it does not
 * exist yet (adapter not plugged in).
 */
class PortNames {
public:
    PortNames();

    /** Maps @p name to the device @p path. */
    void set(std::string const& name, std::string path);

    /** The path of the device, or nothing for a name without a device. */
    [[nodiscard]] std::optional<std::string> path(std::string const& name) const;

private:
    std::map<std::string, std::string> paths_; ///< by name in lower case
};

} // namespace host
