#pragma once

#include "base/Result.h"
#include "host/values/TagReader.h"
#include "interfaces/IcuType.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velk {

struct Variable;

/** Areas of a symbol file, numbered from 0, that a tag address has a name for. */
inline constexpr std::uint16_t kAddressableAreas = 6;

/** How to request a variable from the driver, and the meaning of the returned bytes. */
struct Access {
    std::string dataType;           ///< for the tag address, with conversions: "short-6", "unsignedByte-24"
    std::string addressSpace = "M"; ///< for the tag address: "M", "IB", "3" ...
    ICU_Type shownAs = ICU_NONE;    ///< what the bytes mean; not the driver's type when the tag reads raw bytes
    bool reversed = false;          ///< elements come with their bytes in the opposite order of this machine's
    std::size_t textLength = 0;     ///< above 0: an array of texts of this many bytes each
};

/**
 * The access to a variable by its type in the symbol file.
 *
 * The driver has types for elementary types, texts and their arrays, except for these, which are read as bytes and
 * converted here: 64-bit numbers, which it does not have; arrays of LREAL, of which it reverses only the first element
 * for a big-endian PLC; arrays of BOOL, which it treats as packed bits; arrays of texts. Anything else, mainly
 * structures, shows as bytes.
 *
 * A single bit has the type BOOL in the symbol file, like a whole byte; the user must give the type "bit".
 *
 * @param bigEndian the PLC's byte order
 */
base::Result<Access> inferAccess(Variable const& variable, bool bigEndian);

/**
 * The access that a user asks for.
 *
 * @param type the driver's data type with conversions, or "bit" for a single bit
 * @param area address space, or empty: that of the variable, or else "M"
 * @param variable from the symbol file, or null
 */
base::Result<Access> chosenAccess(std::string const& type, std::string const& area, Variable const* variable);

/** Reverses the bytes of every element, if the access says so. */
host::ValueBytes inOtherOrder(Access const& access, std::span<unsigned char const> bytes);

} // namespace velk
