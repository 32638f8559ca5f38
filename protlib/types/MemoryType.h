#pragma once

#include "interfaces/IcuType.h"

#include <string>

/** One address space of a PLC model and its properties. Setters store values unchecked. */
class MemoryType {
public:
    [[nodiscard]] std::string const& getName() const { return name_; }              ///< as in tag addresses: "M", "IB"
    [[nodiscard]] ICU_Type getNaturalType() const { return naturalType_; }          ///< the unit that an index counts
    [[nodiscard]] int getIcomTypes() const { return icomTypes_; }                   ///< mask of the accepted types
    [[nodiscard]] bool isSwap2() const { return swap2_; }                           ///< 16-bit values are byte-swapped
    [[nodiscard]] bool isSwap4() const { return swap4_; }                           ///< 32-bit values are word-swapped
    [[nodiscard]] bool isBitWrite() const { return bitWrite_; }                     ///< single bits can be written
    [[nodiscard]] bool isBitArrayWrite() const { return bitArrayWrite_; }           ///< bit arrays can be written
    [[nodiscard]] bool isReadOnly() const { return readOnly_; }                     ///< tags cannot be written
    [[nodiscard]] bool isWriteOnly() const { return writeOnly_; }                   ///< tags cannot be read; never set
    [[nodiscard]] bool isInDatagram() const { return inDatagram_; }                 ///< tags may be grouped
    [[nodiscard]] bool isInternalConversion() const { return internalConversion_; } ///< the driver converts itself
    [[nodiscard]] int getBlockReadCount() const { return blockReadCount_; }
    [[nodiscard]] int getBlockWriteCount() const { return blockWriteCount_; }
    [[nodiscard]] int getMinIndex() const { return minIndex_; } ///< lowest valid index
    [[nodiscard]] int getMaxIndex() const { return maxIndex_; } ///< highest valid index

    void setName(std::string const& name) { name_ = name; }
    void setNaturalType(ICU_Type type) { naturalType_ = type; }
    void setIcomTypes(int mask) { icomTypes_ = mask; }
    void setSwap2(bool swap) { swap2_ = swap; }
    void setSwap4(bool swap) { swap4_ = swap; }
    void setBitWrite(bool can) { bitWrite_ = can; }
    void setBitArrayWrite(bool can) { bitArrayWrite_ = can; }
    void setReadOnly(bool readOnly) { readOnly_ = readOnly; }
    void setInDatagram(bool in) { inDatagram_ = in; }
    void setInternalConversion(bool internal) { internalConversion_ = internal; }
    void setBlockReadCount(int count) { blockReadCount_ = count; }
    void setBlockWriteCount(int count) { blockWriteCount_ = count; }
    void setMinIndex(int index) { minIndex_ = index; }
    void setMaxIndex(int index) { maxIndex_ = index; }

private:
    std::string name_;
    ICU_Type naturalType_ = ICU_BOOLEAN;
    int icomTypes_ = 0x3fffff; // types 1 to 22
    bool swap2_ = false;
    bool swap4_ = false;
    bool bitWrite_ = false;
    bool bitArrayWrite_ = false;
    bool readOnly_ = false;
    bool writeOnly_ = false;
    bool inDatagram_ = false;
    bool internalConversion_ = false;
    int blockReadCount_ = 0;
    int blockWriteCount_ = 0;
    int minIndex_ = 0;
    int maxIndex_ = 0;
};
