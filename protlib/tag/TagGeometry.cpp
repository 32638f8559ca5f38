#include "protlib/tag/TagGeometry.h"

#include "interfaces/ITag.h"
#include "protlib/text/TextUtils.h"
#include "protlib/types/DataTypes.h"

namespace ProtUtilsN {

namespace {

constexpr std::int64_t kBitsPerByte = 8;

} // namespace

bool IsBitType(ITag const* tag) {
    return IsBitType(tag->GetVarType());
}

int GetItemCount(ITag const* tag) {
    if (tag->GetItemType() == ICU_NONE) {
        return 1;
    }
    auto const itemLength = GetDataLength(tag->GetItemType());
    return itemLength == 0 ? 0 : tag->GetVarLength() / itemLength;
}

ICU_Type GetBasicType(ITag const* tag) {
    auto const itemType = tag->GetItemType();
    return itemType == ICU_NONE ? tag->GetVarType() : itemType;
}

int GetBasicLength(ITag const* tag) {
    return GetDataLength(GetBasicType(tag));
}

std::int64_t getStartingBitExact(ITag const* tag) {
    return tag->GetByteOffset() * kBitsPerByte + (IsBitType(tag) ? tag->GetBitIndex() : 0);
}

std::int64_t getEndingBitExact(ITag const* tag) {
    return getStartingBitExact(tag) + (IsBitType(tag) ? tag->GetVarLength() : tag->PackedLen() * kBitsPerByte);
}

int getStartingBit(ITag const* tag) {
    return clampToInt(getStartingBitExact(tag));
}

int getEndingBit(ITag const* tag) {
    return clampToInt(getEndingBitExact(tag));
}

} // namespace ProtUtilsN
