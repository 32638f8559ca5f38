#pragma once

#include "tools/velk/project/Settings.h"

#include <string>
#include <string_view>

namespace velk {

/**
 * A word of the command line that names tags: [STATION:]NAME[:TYPE[(CONVERSIONS)]].
 *
 * NAME is a tag of the project file, a PLC variable, or a pattern over the PLC's variables.
 */
struct TagRequest {
    std::string shown; ///< the name as the user gave it, for tables and messages
    int node = 0;
    std::string variable; ///< in the PLC, or a pattern
    std::string type;     ///< the driver's data type with conversions, or "bit"; empty: from the symbol file
    std::string area;     ///< address space; empty: from the symbol file
    std::string offset = "0";
    bool isPattern = false;
};

/** Parses a word. Throws CommandError (usage) when it is not valid. */
TagRequest parseTagRequest(std::string_view word, Settings const& settings);

} // namespace velk
