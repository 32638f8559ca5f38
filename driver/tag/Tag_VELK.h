#pragma once

#include "driver/tag/TagBinding.h"
#include "interfaces/ItemStatus.h"
#include "protlib/tag/TagBase.h"

#include <cstdint>
#include <span>
#include <string>

class MemoryType;
class Model;

namespace _VELK {
class RtsSym;
class ParamManager;
struct TagAddress;
struct TagServices;
} // namespace _VELK

/**
 * A variable of a PLC: its address, its binding to the PLC's symbol file, and the PLC's byte order in addition to the
 * conversions of TagBase.
 *
 * The host passes tags in as constant objects, so what an exchange finds out about a tag (its binding and its status)
 * is mutable. A tag points into the parameters and models of its driver and must not outlive it.
 */
class Tag_VELK final : public TagBase {
public:
    /**
     * Parses `nodeid?tagname?addressSpace?offset?datatype`. When the address is refused, IsValid() is false and the
     * error text says why. May throw std::bad_alloc.
     */
    Tag_VELK(char const* address, _VELK::TagServices const& driver);
    Tag_VELK(Tag_VELK const&) = default;
    Tag_VELK& operator=(Tag_VELK const&) = delete;
    ~Tag_VELK() override;

    ITag* Clone() const override; ///< null when there is no memory
    int GetByteOffset() const override;
    int GetBitIndex() const override;
    char const* GetVarName() const override { return address_.c_str(); }
    ICU_Type GetVarType() const override { return varType_; }
    int GetVarLength() const override { return varLength_; }
    ICU_Type GetItemType() const override { return itemType_; }
    bool IsReadOnly() const override;
    bool IsWriteOnly() const override;

    /** TagBase::Convert(), also swapping the bytes for a node that is not "Intel". */
    bool Convert(unsigned char const* source, unsigned char* destination, bool towardsPlc) const override;
    bool IsValid() const { return valid_; }

    /** Takes index and subindex from the address's offset field; false with the error text set. */
    bool parseSubindex(std::string const& offset);

    /**
     * Binds the tag to its variable in the symbol table.
     *
     * @param stamp the project identifier of the table's file; a tag bound with it is not looked up again
     * @return 0 when the tag is bound, 1 when there is no such variable (nothing is changed then)
     */
    int UpdateTagData(_VELK::RtsSym const& symbols, std::uint32_t stamp) const;

    /** Whether the last successful UpdateTagData() was given this stamp and the binding is still in use. */
    bool isBoundTo(std::uint32_t stamp) const { return binding_.bound && binding_.stamp == stamp; }

    void useDefaultAddress() const; ///< returns to the configured index and subindex, in the area of the address space

    /** Remembers that the file of generation @p file (0: none yet) has no usable variable. */
    void setMissingIn(std::uint32_t file) const { binding_.missingFile = file; }
    bool isMissingIn(std::uint32_t file) const { return file != 0 && binding_.missingFile == file; }

    MemTypeRow const* areaRow() const; ///< the PLC's memory area of the address in use; null when it has none

    /** The offset of the address in use: the variable's once bound, else the configured one; bits in a bit area. */
    int index() const { return binding_.index; }
    idal_error_t status() const { return binding_.status; }
    void setStatus(idal_error_t status) const { binding_.status = status; }

    int nodeId() const { return nodeId_; }
    bool isBitArea() const { return bitArea_; } ///< the address space is "MB", "IB" or "QB"
    bool isProjectIdentifier() const;           ///< the memory type is "PROJ_ID"
    MemoryType const* memoryType() const { return memoryType_; }
    int maxDatagramItems() const;
    int maxDatagramLength() const;                                    ///< bytes
    std::string const& variableName() const { return variableName_; } ///< with "." for every "/"
    bool swapsBytes() const; ///< the node's byte order is not this machine's; a further Config() may change it

private:
    bool parse(_VELK::TagServices const& driver);
    bool findParameters(_VELK::TagServices const& driver, _VELK::TagAddress const& fields);
    bool findMemoryType(_VELK::TagServices const& driver, std::string const& addressSpace);
    bool parseType(std::string const& dataType);
    bool isSubindexValid(std::int64_t subindex) const;
    bool checkType() const;
    bool refuse(char const* reason) const;
    int naturalLength() const;
    bool hasBitUnits() const;
    bool fixByteOrder(std::span<unsigned char> value) const;

    bool valid_ = false;
    bool bitArea_ = false;
    std::string address_;
    int nodeId_ = 0;
    ICU_Type varType_ = ICU_NONE;
    int varLength_ = 0;
    ICU_Type itemType_ = ICU_NONE;
    int configuredIndex_ = 0;
    int configuredSubindex_ = 0;
    MemoryType const* memoryType_ = nullptr;
    _VELK::ParamManager const* params_ = nullptr;
    Model const* model_ = nullptr;
    MemTypeRow const* addressSpaceRow_ = nullptr;
    std::string variableName_;
    mutable _VELK::TagBinding binding_;
};
