#pragma once

#include <cstddef>
#include <string>

namespace host {

/** "1 byte", "2 bytes". */
inline std::string counted(std::size_t count, std::string const& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

} // namespace host
