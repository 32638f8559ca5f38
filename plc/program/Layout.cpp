#include "plc/program/Layout.h"

#include <algorithm>

namespace plc {

std::uint64_t Layout::place(std::uint64_t size, std::uint32_t alignment) {
    std::uint64_t offset = next_;
    for (;;) {
        offset = (offset + alignment - 1) / alignment * alignment;
        auto const taken = std::find_if(reserved_.begin(), reserved_.end(), [&](Range const& range) {
            return offset < range.to && range.from < offset + size;
        });
        if (taken == reserved_.end()) {
            next_ = offset + size;
            return offset;
        }
        offset = taken->to;
    }
}

std::uint64_t Layout::placeBit() {
    if (nextBit_ % 8 == 0) {
        nextBit_ = place(1, 1) * 8;
    }
    return nextBit_++;
}

} // namespace plc
