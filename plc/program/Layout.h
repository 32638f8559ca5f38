#pragma once

#include <cstdint>
#include <vector>

namespace plc {

/// Finds free places in one memory area. Offsets are in bytes unless stated otherwise.
class Layout {
public:
    /// Keeps [offset, offset + size) free of variables without a given offset.
    void reserve(std::uint64_t offset, std::uint64_t size) { reserved_.push_back({offset, offset + size}); }

    /// The next free place; places only increase.
    [[nodiscard]] std::uint64_t place(std::uint64_t size, std::uint32_t alignment);

    /// The next free single bit, as an offset in bits. Bits share bytes among themselves only.
    [[nodiscard]] std::uint64_t placeBit();

private:
    struct Range {
        std::uint64_t from;
        std::uint64_t to;
    };

    std::vector<Range> reserved_;
    std::uint64_t next_ = 0;
    std::uint64_t nextBit_ = 0; ///< a multiple of 8 when a new byte is needed
};

} // namespace plc
