#pragma once

#include "base/Result.h"
#include "host/values/TagReader.h"
#include "tools/velk/line/Access.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

class ITag;

namespace velk {

/** A tag of the driver with what is needed to show and to parse its values. */
struct Tag {
    std::string name; ///< as the user gave it, or the PLC's name when a pattern found it
    int node = 0;
    std::string station; ///< the station's name, or else its number
    std::string variable;
    std::string plcType; ///< from the symbol file; empty when it is not known
    Access access;
    ITag* tag = nullptr;   ///< the driver's; null when it could not be made
    base::Failure failure; ///< only without a tag

    /** The name of the type for a table: the PLC's, or else the driver's. */
    [[nodiscard]] std::string const& typeText() const { return plcType.empty() ? access.dataType : plcType; }

    /** A value that was read, as text. */
    [[nodiscard]] std::string text(host::ValueBytes const& bytes) const;

    /** The same without the quotes of a text. */
    [[nodiscard]] std::string plainText(host::ValueBytes const& bytes) const;

    /** The same for JSON: booleans, numbers, texts, arrays of them; null for NaN and infinity. */
    [[nodiscard]] nlohmann::json json(host::ValueBytes const& bytes) const;

    /** The bytes to write for a text; the failure says what is wrong and which values are accepted. */
    [[nodiscard]] base::Result<host::ValueBytes> parse(std::string_view text) const;
};

} // namespace velk
