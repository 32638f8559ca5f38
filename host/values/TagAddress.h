#pragma once

#include "base/Result.h"

#include <string>

namespace host {

/** The fields of a tag address. Their content is checked by the driver. */
struct TagAddress {
    int node = 0;
    std::string name;               ///< PLC variable: "PLC_PRG.Counter", "PLC_PRG/Counter"
    std::string addressSpace = "M"; ///< "M", "MB", "I", "IB", "Q", "QB", "3", "4", "5" or "PROJ_ID"
    std::string offset = "0";       ///< "index" or "index.subindex"; replaced by the symbol's when it is bound
    std::string dataType;           ///< "int", "int(swap2,bcd)", "string-20"
};

/**
 * The tag address in the driver's format: "1?PLC_PRG.Counter?M?0?int".
 *
 * A field that contains a "?" or a control character is refused, because the format cannot carry it.
 */
base::Result<std::string> tagAddress(TagAddress const& fields);

} // namespace host
