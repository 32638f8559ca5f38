#pragma once

#include <optional>
#include <string>

namespace host {

/** A program that has a device open. */
struct PortHolder {
    int process = 0;
    std::string program; ///< empty when it is not known
};

/**
 * The first program that has the device @p path open, as far as this user may see.
 *
 * @param processes where the kernel lists its processes
 */
std::optional<PortHolder> findHolder(std::string const& path, std::string const& processes = "/proc");

} // namespace host
