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

/** How the driver has to be asked for a variable, and how the bytes that it answers are to be understood. */
struct Access {
    std::string dataType;           ///< for the tag address, with conversions: "short-6", "unsignedByte-24"
    std::string addressSpace = "M"; ///< for the tag address: "M", "IB", "3" ...
    ICU_Type shownAs = ICU_NONE;    ///< what the bytes are; not the driver's type where the tag carries them raw
    bool reversed = false;          ///< elements come with their bytes in the opposite order of this machine's
    std::size_t textLength = 0;     ///< above 0: an array of texts of so many bytes each
};

/**
 * The access to a variable by its type in the symbol file.
 *
 * Elementary types, texts and their arrays have a type of their own in the driver, but for these, which are read as
 * bytes and put together here: 64-bit numbers, which it does not have; arrays of LREAL, of which it turns only the
 * first element round for a big-endian PLC; arrays of BOOL, which it takes for packed bits; arrays of texts. Whatever
 * else there is, structures above all, shows as bytes.
 *
 * A single bit has the type BOOL in the symbol file, like a whole byte; it has to be told by its user (type "bit").
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

/** The other order of bytes in every element, where the access says so; it is its own inverse. */
host::ValueBytes inOtherOrder(Access const& access, std::span<unsigned char const> bytes);

} // namespace velk
