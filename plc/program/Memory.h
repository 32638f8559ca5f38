#pragma once

#include "plc/frames/Bytes.h"
#include "plc/program/ProgramDescription.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace plc {

/// The memory areas 0..5 of a PLC. For places outside an area, or in no area, nothing is returned instead of failing.
class Memory {
public:
    explicit Memory(std::array<std::uint32_t, kAreaCount> const& sizes);

    /// `size` bytes from the byte `offset` on.
    [[nodiscard]] std::optional<std::span<std::uint8_t>> at(std::uint32_t area, std::uint64_t offset,
                                                            std::uint64_t size);
    [[nodiscard]] std::optional<ByteView> at(std::uint32_t area, std::uint64_t offset, std::uint64_t size) const;

    /// A whole area; it must be one of 0..5.
    [[nodiscard]] std::span<std::uint8_t> area(std::size_t number) { return areas_.at(number); }

private:
    std::array<Bytes, kAreaCount> areas_;
};

} // namespace plc
