#include "protlib/tag/TagBase.h"

#include "protlib/safety/NoThrow.h"
#include "protlib/safety/ScratchBuffer.h"
#include "protlib/tag/TagGeometry.h"
#include "protlib/text/TextUtils.h"
#include "protlib/types/BitPacking.h"
#include "protlib/types/ValueConversions.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace {

constexpr std::size_t kScratchOnStack = 256;

std::size_t lengthFrom(int length) {
    return static_cast<std::size_t>(std::max(length, 0));
}

} // namespace

TagBase::TagBase(TagBase const& other) : ITag(other), conversions(other.conversions), errorText_(other.errorText_) {}

TagBase::~TagBase() = default;

int TagBase::PackedLen() const {
    return ProtUtilsN::IsBitType(this) ? ProtUtilsN::GetLenOfBits(GetBitIndex(), GetVarLength()) : GetVarLength();
}

bool TagBase::ConvertVariable(unsigned char const* source, unsigned char* destination, bool towardsPlc) const {
    return Convert(source, destination, towardsPlc);
}

bool TagBase::IsReadOnly() const {
    return false;
}

bool TagBase::IsWriteOnly() const {
    return false;
}

bool TagBase::Convert(unsigned char const* source, unsigned char* destination, bool towardsPlc) const {
    ProtUtilsN::ScratchBuffer<kScratchOnStack> scratch(std::max({GetVarLength(), PackedLen(), 0}));
    if (!scratch.available()) {
        return false;
    }
    auto* const value = scratch.bytes().data();
    return towardsPlc ? convertTowardsPlc(source, value, destination) : convertTowardsHost(source, value, destination);
}

bool TagBase::DoConversion(unsigned char* buffer, char const* keyword, bool towardsPlc) const {
    using namespace ValueConversionsN;
    if (keyword == nullptr) {
        return false;
    }
    std::string_view const name = keyword;
    std::span const bytes(buffer, lengthFrom(GetVarLength()));
    if (name == "swapnibble") {
        return SwapNibbles(bytes);
    }
    if (name == "swap2") {
        return ReverseGroups(bytes, 2);
    }
    if (name == "swap4") {
        return ReverseGroups(bytes, 4);
    }
    if (name == "swap8") {
        return ReverseGroups(bytes, 8);
    }
    if (name == "bcd") {
        auto const elementLength = ProtUtilsN::GetBasicLength(this);
        return towardsPlc ? BinaryToPackedDecimal(bytes, elementLength) : PackedDecimalToBinary(bytes, elementLength);
    }
    if (name == "neg") {
        return Negate(bytes, ProtUtilsN::GetBasicType(this), ProtUtilsN::GetItemCount(this));
    }
    if (name == "inv") {
        return ProtUtilsN::IsBitType(this) ? InvertBits(bytes) : InvertBytes(bytes, ProtUtilsN::GetBasicType(this));
    }
    return false;
}

void TagBase::SetError(char const* text) const {
    ProtUtilsN::keepText(errorText_, text);
}

char const* TagBase::GetErrorText() const noexcept {
    return errorText_.c_str();
}

// The two directions walk the list in opposite orders, so that reading undoes exactly what writing did.

bool TagBase::convertTowardsHost(unsigned char const* source, unsigned char* value, unsigned char* destination) const {
    if (ProtUtilsN::IsBitType(this)) {
        ProtUtilsN::UnpackBits(value, source, GetBitIndex(), GetVarLength());
    } else {
        std::copy_n(source, lengthFrom(PackedLen()), value);
    }
    if (!std::all_of(conversions.rbegin(), conversions.rend(),
                     [&](auto const& keyword) { return applyConversion(keyword, value, false); })) {
        return false;
    }
    std::copy_n(value, lengthFrom(GetVarLength()), destination);
    return true;
}

bool TagBase::convertTowardsPlc(unsigned char const* source, unsigned char* value, unsigned char* destination) const {
    std::copy_n(source, lengthFrom(GetVarLength()), value);
    if (!std::all_of(conversions.begin(), conversions.end(),
                     [&](auto const& keyword) { return applyConversion(keyword, value, true); })) {
        return false;
    }
    if (ProtUtilsN::IsBitType(this)) {
        ProtUtilsN::PackBits(destination, value, GetBitIndex(), GetVarLength());
    } else {
        std::copy_n(value, lengthFrom(PackedLen()), destination);
    }
    return true;
}

bool TagBase::applyConversion(std::string const& keyword, unsigned char* value, bool towardsPlc) const {
    if (DoConversion(value, keyword.c_str(), towardsPlc)) {
        return true;
    }
    if (!ProtUtilsN::noThrow([&] { errorText_.assign("Conversion error at: ").append(keyword); })) {
        errorText_.clear();
    }
    return false;
}
