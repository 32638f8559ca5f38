#pragma once

#include "base/FailureKind.h"

#include <string>

namespace velk {

/** What is likely behind a failure, as a sentence to be put behind the complaint; empty when nothing is to be said. */
std::string advice(base::FailureKind kind, bool somethingWasReceived);

} // namespace velk
