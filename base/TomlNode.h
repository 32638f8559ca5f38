#pragma once

#include "base/Complaints.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace base {

struct TomlEntry;

/** A value of a TOML text, with its place. */
struct TomlNode {
    struct DateOrTime {};
    using List = std::vector<TomlNode>;
    using Table = std::vector<TomlEntry>; ///< in the order of the keys

    std::variant<DateOrTime, bool, std::int64_t, double, std::string, List, Table> value;
    TextPlace place;

    /** The value when it is of this kind, else nullptr. */
    template <typename Kind>
    [[nodiscard]] Kind const* as() const {
        return std::get_if<Kind>(&value);
    }
};

/** A key of a table, with its place, and its value. */
struct TomlEntry {
    std::string key;
    TextPlace place;
    TomlNode value;
};

/** Parses a whole text into its top-level table. Throws FileError with @p complaints when the text is not TOML. */
[[nodiscard]] TomlNode parseToml(std::string_view text, Complaints complaints);

} // namespace base
