#pragma once

#include "base/Result.h"
#include "interfaces/IProtocol.h"

namespace host {

/**
 * The reason that a driver instance holds for its last failure. Only after a failed call: success does not clear
 * it, and a few failures leave an older reason in place.
 */
inline base::Failure protocolFailure(IProtocol const& protocol) {
    char const* const text = protocol.GetLastErrorString();
    bool const said = text != nullptr && *text != '\0';
    return {protocol.GetLastError(), said ? text : "the driver gave no reason"};
}

} // namespace host
