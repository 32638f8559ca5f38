#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/frames/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace plc {

/// An item of a variable list. Size 0 means a single bit, whose offset counts bits and whose value takes one byte.
struct ListItem {
    std::uint16_t area = 0;
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
    ByteView value{}; ///< writes only; part of the request

    [[nodiscard]] bool isBit() const { return size == 0; }
    [[nodiscard]] std::uint64_t valueSize() const { return isBit() ? 1 : size; }
};

struct ListRequest {
    std::vector<ListItem> items{};
    std::uint32_t projectId = 0;
};

/**
 * Splits a variable-list request: service byte, 0, item count (4), for each item area (2), offset (4) and size (4),
 * followed by the value when writing, and at the end the project identifier (4). Returns a description of the error
 * when the length does not match exactly.
 */
[[nodiscard]] std::variant<ListRequest, std::string> parseListRequest(ByteView request, ByteOrder order);

} // namespace plc
