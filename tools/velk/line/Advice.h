#pragma once

#include "base/Result.h"
#include "tools/velk/context/ExitCode.h"

#include <string>

namespace velk {

/**
 * What is likely behind a failure, as a sentence to be put behind the complaint; empty when nothing is to be said.
 *
 * @param code what the failure means for the program
 */
std::string advice(ExitCode code, base::Failure const& failure, bool somethingWasReceived);

} // namespace velk
