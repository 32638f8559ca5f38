#pragma once

#include <map>
#include <optional>
#include <string>

namespace host {

/**
 * Which device a configured port name stands for.
 *
 * "com1" to "com16", in any case of letters, stand for /dev/ttyS0 to /dev/ttyS15 unless they are set otherwise.
 * A name with a "/" in it is the path of a device itself. Any other name is that of a device in /dev or, when there is
 * none, in the current folder, such as a link to a pseudo-terminal. One that begins with "tty" stands for a device in
 * /dev even while there is none: an adapter that is not plugged in.
 */
class PortNames {
public:
    PortNames();

    /** Lets @p name stand for the device @p path. */
    void set(std::string const& name, std::string path);

    /** The path of the device, or nothing for a name that stands for none. */
    [[nodiscard]] std::optional<std::string> path(std::string const& name) const;

private:
    std::map<std::string, std::string> paths_; ///< by name in lower case
};

} // namespace host
