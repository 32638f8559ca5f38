#include "tools/velk/trace/Hex.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace velk::trace {

std::string hexText(plc::ByteView bytes) {
    return fmt::format("{:02X}", fmt::join(bytes, " "));
}

} // namespace velk::trace
