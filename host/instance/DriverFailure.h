#pragma once

#include "base/Result.h"

#include <string_view>

class IProtocol;

namespace host {

/**
 * The kind of a driver failure, from its code (interfaces/ErrorCodes.h) and its text.
 *
 * The only place that examines the driver's texts. An unknown text is classified by its code alone.
 */
base::FailureKind driverFailureKind(int code, std::string_view text);

/**
 * The reason for the last failure of a driver instance. Only after a failed call: success does not clear it, and a few
 * failures leave an older reason unchanged.
 */
base::Failure driverFailure(IProtocol const& protocol);

} // namespace host
