#include "plc/program/Memory.h"

namespace plc {

Memory::Memory(std::array<std::uint32_t, kAreaCount> const& sizes) {
    for (std::size_t i = 0; i < kAreaCount; ++i) {
        areas_[i].resize(sizes[i]);
    }
}

std::optional<std::span<std::uint8_t>> Memory::at(std::uint32_t area, std::uint64_t offset, std::uint64_t size) {
    if (area >= kAreaCount || offset > areas_[area].size() || size > areas_[area].size() - offset) {
        return std::nullopt;
    }
    return std::span(areas_[area]).subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
}

std::optional<ByteView> Memory::at(std::uint32_t area, std::uint64_t offset, std::uint64_t size) const {
    if (area >= kAreaCount || offset > areas_[area].size() || size > areas_[area].size() - offset) {
        return std::nullopt;
    }
    return ByteView(areas_[area]).subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
}

} // namespace plc
