#pragma once

#include "driver/Protocol_VELK.h"
#include "driver/config/ByteOrder.h"
#include "driver/tag/Tag_VELK.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** One call of the sequencer and what its first steps find out. */
struct Protocol_VELK::ListCall {
    static constexpr std::size_t kPathLength = 260;

    bool write = false;
    ITag const* const* tags = nullptr;
    int count = 0;
    unsigned char* data = nullptr;
    int explicitLength = 0; ///< 0: every item has its own length

    std::uint16_t node = 0;
    _VELK::NodeParams const* params = nullptr;
    NodeState* state = nullptr;
    _VELK::ByteOrder order = _VELK::ByteOrder::LittleEndian;
    std::array<char, kPathLength> symbolFile{}; ///< path of the node's stored symbol file

    [[nodiscard]] Tag_VELK const& tag(int index) const { return velkTag(*tags[index]); }

    /** Bytes of a value in a request, a reply or an image. */
    [[nodiscard]] std::size_t itemLength(Tag_VELK const& item) const {
        return static_cast<std::size_t>(explicitLength != 0 ? explicitLength : item.PackedLen());
    }
};
