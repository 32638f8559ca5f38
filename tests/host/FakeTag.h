#pragma once

#include "interfaces/ITag.h"
#include "interfaces/ItemStatus.h"

#include <string>
#include <utility>
#include <vector>

namespace hosttest {

/** A tag as the host sees it; everything that a test sets or checks is public. */
class FakeTag final : public ITag {
public:
    FakeTag(std::string tagName, int nodeNumber, ICU_Type tagType, int valueLength)
        : name(std::move(tagName)), node(nodeNumber), type(tagType), length(valueLength), packed(valueLength),
          value(static_cast<std::size_t>(valueLength > 0 ? valueLength : 0), 0) {}

    ITag* Clone() const override { return nullptr; }
    int GetByteOffset() const override { return 0; }
    int GetBitIndex() const override { return 0; }
    char const* GetVarName() const override { return name.c_str(); }
    ICU_Type GetVarType() const override { return type; }
    int GetVarLength() const override { return length; }
    ICU_Type GetItemType() const override { return ICU_NONE; }
    int PackedLen() const override { return packed; }
    bool ConvertVariable(unsigned char const*, unsigned char*, bool) const override { return false; }
    bool IsReadOnly() const override { return readOnly; }
    bool IsWriteOnly() const override { return false; }

    std::string name;
    int node;
    ICU_Type type;
    int length;
    int packed;
    bool readOnly = false;
    bool alone = false;                       ///< coexists with no other tag
    bool spoils = false;                      ///< every call that includes it fails
    idal_error_t status = kItemGood;          ///< its status in a read
    mutable std::vector<unsigned char> value; ///< in the PLC
};

} // namespace hosttest
