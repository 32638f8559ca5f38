#include "driver/config/MemoryModels.h"

#include "protlib/types/DataTypes.h"
#include "protlib/types/MemoryManager.h"

#include <array>

namespace _VELK {

namespace {

constexpr int kMaxItems = 90;
constexpr int kMaxLength = 1'024;
constexpr int kMaxIndex = 0x7fffffff;
constexpr int kByteAreaTypes = 0x1ff3ff; // boolean to string, and the arrays of boolean to double
constexpr int kBitAreaTypes = 0x1;
constexpr int kIdentifierTypes = 0x40;

/** One memory type of this driver. The description advertises internal conversion for "M"; it is off, deliberately. */
struct MemoryRow {
    char const* name;
    ICU_Type naturalType;
    int icomTypes;
    bool inDatagram;
};

constexpr std::array<MemoryRow, 10> kMemoryRows{{
    {"M", ICU_BYTE, kByteAreaTypes, true},
    {"MB", ICU_BOOLEAN, kBitAreaTypes, false},
    {"I", ICU_BYTE, kByteAreaTypes, false},
    {"IB", ICU_BOOLEAN, kBitAreaTypes, false},
    {"Q", ICU_BYTE, kByteAreaTypes, false},
    {"QB", ICU_BOOLEAN, kBitAreaTypes, false},
    {"3", ICU_BYTE, kByteAreaTypes, false},
    {"4", ICU_BYTE, kByteAreaTypes, false},
    {"5", ICU_BYTE, kByteAreaTypes, false},
    {"PROJ_ID", ICU_UNSIGNED_INT, kIdentifierTypes, false},
}};

MemoryType makeMemoryType(MemoryRow const& row) {
    MemoryType type;
    type.setName(row.name);
    type.setNaturalType(row.naturalType);
    type.setIcomTypes(row.icomTypes);
    type.setInDatagram(row.inDatagram);
    type.setMaxIndex(kMaxIndex);
    return type;
}

Model makeModel(char const* name) {
    Model model(name);
    model.setMaxDatagramItems(kMaxItems);
    model.setMaxDatagramLength(kMaxLength);
    for (MemoryRow const& row : kMemoryRows) {
        model.addMemoryType(makeMemoryType(row));
    }
    return model;
}

} // namespace

void registerModels(MemoryManager& manager) {
    manager.addModel(makeModel("Intel"));
    manager.addModel(makeModel("Motorola"));
}

} // namespace _VELK
