#pragma once

#include "interfaces/IcuType.h"

/**
 * A variable of a PLC as the host sees it.
 *
 * Not derived from IInterface. Slots: 0 complete destructor, 1 deleting destructor, then the operations below from 2 to
 * 12. A value has two representations: the host's (GetVarLength() bytes; for bit types one byte for each bit, 0 or 1)
 * and the PLC's (PackedLen() bytes, in the PLC's byte order, bits packed).
 */
class ITag {
public:
    virtual ~ITag() = default;

    /** An independent copy, owned by the caller and deleted through slot 1. */
    virtual ITag* Clone() const = 0;

    /** Byte offset of the value in its address space. */
    virtual int GetByteOffset() const = 0;

    /** Bit 0 to 7 inside the first byte, for bit types. */
    virtual int GetBitIndex() const = 0;

    /** The tag address as it was given. Valid as long as the tag. */
    virtual char const* GetVarName() const = 0;

    virtual ICU_Type GetVarType() const = 0;

    /** Length of the host's value in bytes (for bit types this is also the number of bits). */
    virtual int GetVarLength() const = 0;

    /** Element type of an array, ICU_NONE for a scalar. */
    virtual ICU_Type GetItemType() const = 0;

    /** Bytes that the value occupies on the PLC's side. */
    virtual int PackedLen() const = 0;

    /**
     * Moves a value between the two representations.
     *
     * @param source the PLC's representation, or the host's when @p towardsPlc is true
     * @param destination the other one; not written on failure
     * @return false when a conversion of the tag does not fit the value
     */
    virtual bool ConvertVariable(unsigned char const* source, unsigned char* destination, bool towardsPlc) const = 0;

    virtual bool IsReadOnly() const = 0;
    virtual bool IsWriteOnly() const = 0;

protected:
    ITag() = default;
    ITag(ITag const&) = default;
    ITag& operator=(ITag const&) = default;
};
