#pragma once

#include "base/FailureKind.h"

#include <string>

namespace velk {

/** The likely cause of a failure, as a sentence that follows the message; empty when none is known. */
std::string advice(base::FailureKind kind, bool somethingWasReceived);

} // namespace velk
