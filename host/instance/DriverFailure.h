#pragma once

#include "base/Result.h"

#include <string_view>

class IProtocol;

namespace host {

/**
 * What a failure of the driver is, from its code (interfaces/ErrorCodes.h) and its text.
 *
 * The only place where the driver's texts are looked at. A text that is not known is classified by its code alone.
 */
base::FailureKind driverFailureKind(int code, std::string_view text);

/**
 * The reason that a driver instance holds for its last failure. Only after a failed call: success does not clear
 * it, and a few failures leave an older reason in place.
 */
base::Failure driverFailure(IProtocol const& protocol);

} // namespace host
