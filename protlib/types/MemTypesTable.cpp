#include "protlib/types/MemTypesTable.h"

namespace {

constexpr int kAreaFlags = 96;
constexpr int kAllButBits = 0x3feffe; // types 2 to 12 and 14 to 22
constexpr int kMaxIndex = 0x7fffffff;
constexpr int kNoArea = 6; // row of "NO_IP"

constexpr MemTypeRow areaRow(char const* name, int area) {
    return {name, ICU_UNSIGNED_BYTE, area, kAreaFlags, kAllButBits, kAllButBits, 0, 0, kMaxIndex};
}

} // namespace

constinit std::array<MemTypeRow, 7> const MemTypes{{
    areaRow("M", 0),
    areaRow("I", 1),
    areaRow("Q", 2),
    areaRow("3", 3),
    areaRow("4", 4),
    areaRow("5", 5),
    {"NO_IP", ICU_UNSIGNED_BYTE, 0, 0, kAllButBits, kAllButBits, 0, 0, 0},
}};

MemTypeRow const* memTypeRowOfArea(std::uint32_t area) {
    return area < kNoArea ? &MemTypes[area] : nullptr;
}

MemTypeRow const* memTypeRowOfLetter(char letter) {
    for (auto const& row : MemTypes) {
        if (row.name[0] == letter) {
            return &row;
        }
    }
    return nullptr;
}
