#pragma once

#include "interfaces/ITag.h"
#include "protlib/tag/TagRegistry.h"

#include <string>
#include <vector>

/**
 * The part common to all drivers' tags: the conversions, the error text, and moving a value between the PLC's
 * representation and the host's.
 *
 * A driver derives its tag from this class, returns address and type (slots 2 to 8) and fills `conversions` in its
 * constructor. Slots 13 and 14 follow those of ITag. One thread at a time uses a tag.
 */
class TagBase : public ITag {
public:
    TagBase& operator=(TagBase const&) = delete;
    ~TagBase() override; ///< removes the tag from its registry

    /** For bit types the bytes that the bits touch, else GetVarLength(). */
    int PackedLen() const override;

    /** Calls Convert(), so that a driver's own Convert() is always the one in use. */
    bool ConvertVariable(unsigned char const* source, unsigned char* destination, bool towardsPlc) const override;

    bool IsReadOnly() const override;  ///< false
    bool IsWriteOnly() const override; ///< false

    /**
     * Slot 13: moves one value and applies the conversions, first to last towards the PLC, last to first towards
     * the host.
     *
     * @param source PackedLen() bytes as the PLC has them; towards the PLC GetVarLength() host bytes
     * @param destination the other one. Bits are packed into it without touching their neighbours.
     * @return false when a conversion fails (the error text then names it) or memory runs out; the destination is then
     *         not written
     */
    virtual bool Convert(unsigned char const* source, unsigned char* destination, bool towardsPlc) const;

    /**
     * Slot 14: applies one conversion in place to the GetVarLength() host bytes in @p buffer.
     *
     * @param keyword "swapnibble", "swap2", "swap4", "swap8", "bcd", "neg" or "inv"; case counts
     * @return false when the keyword is unknown or does not fit the value or its type; no error text is set
     */
    virtual bool DoConversion(unsigned char* buffer, char const* keyword, bool towardsPlc) const;

    /** Replaces the tag's error text, which is empty when @p text is null or there is no memory for it. */
    void SetError(char const* text) const;

    /** Why the tag's last operation failed; empty until one did. Valid until the next error. */
    [[nodiscard]] char const* GetErrorText() const noexcept;

    /** For the protocol that made the tag. */
    [[nodiscard]] TagPlace& registryPlace() noexcept { return place_; }

protected:
    TagBase() = default;
    TagBase(TagBase const& other); ///< the copy is in no registry

    /** The conversions as the user wrote them, for example "swap2", "bcd". Unknown ones fail when they are used. */
    std::vector<std::string> conversions;

private:
    bool convertTowardsHost(unsigned char const* source, unsigned char* value, unsigned char* destination) const;
    bool convertTowardsPlc(unsigned char const* source, unsigned char* value, unsigned char* destination) const;
    bool applyConversion(std::string const& keyword, unsigned char* value, bool towardsPlc) const;

    mutable std::string errorText_;
    TagPlace place_{this};
};
