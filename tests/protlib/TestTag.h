#pragma once

#include "protlib/tag/TagBase.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/** A tag whose results are all set by the test. */
class TestTag : public TagBase {
public:
    explicit TestTag(ICU_Type varType = ICU_UNSIGNED_BYTE, ICU_Type elementType = ICU_NONE, int varLength = 1,
                     std::vector<std::string> keywords = {})
        : type(varType), itemType(elementType), length(varLength) {
        conversions = std::move(keywords);
    }
    ~TestTag() override {
        if (deletions != nullptr) {
            deletions->push_back(name);
        }
    }
    TestTag(TestTag const&) = default;
    TestTag& operator=(TestTag const&) = delete;

    ITag* Clone() const override { return new TestTag(*this); }
    int GetByteOffset() const override { return byteOffset; }
    int GetBitIndex() const override { return bitIndex; }
    char const* GetVarName() const override { return name.c_str(); }
    ICU_Type GetVarType() const override { return type; }
    int GetVarLength() const override { return length; }
    ICU_Type GetItemType() const override { return itemType; }

    void setConversions(std::vector<std::string> keywords) { conversions = std::move(keywords); }
    std::vector<std::string> const& getConversions() const { return conversions; }

    ICU_Type type;
    ICU_Type itemType;
    int length;
    int byteOffset = 0;
    int bitIndex = 0;
    std::string name = "tag";
    std::shared_ptr<std::vector<std::string>> deletions; ///< receives the name of a destroyed tag
};

/** Calls one slot of an object's virtual table, as a host does that knows only the order of the slots. */
template <typename Result, typename... Arguments>
Result callSlot(void const* object, std::size_t slot, Arguments... arguments) {
    char const* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    Result (*function)(void const*, Arguments...) = nullptr;
    std::memcpy(&function, table + slot * sizeof(void*), sizeof function);
    return function(object, arguments...);
}
