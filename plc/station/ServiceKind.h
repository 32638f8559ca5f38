#pragma once

#include "plc/frames/Bytes.h"

#include <cstdint>
#include <string_view>

namespace plc {

/// The services of the PLC, distinguished by the first byte of a request.
enum class ServiceKind : std::uint8_t {
    kUnknown = 0,
    kLogin = 0x01,
    kLogout = 0x02,
    kReadList = 0x2E,
    kFileOpen = 0x31, ///< open a file and read its first piece
    kFileNext = 0x32, ///< read the open file's next piece
    kWriteList = 0x3C,
    kLinkCheck = 0x42
};

/// kUnknown for an empty request and for every other first byte.
[[nodiscard]] ServiceKind serviceOf(ByteView request);

/// "login", "read_list" and so on.
[[nodiscard]] std::string_view nameOf(ServiceKind service);

} // namespace plc
