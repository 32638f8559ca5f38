#pragma once

#include "tools/velk/ExitCode.h"

#include <string>

namespace velk {

/** What is likely behind an outcome, as a sentence to be put behind the complaint; empty when nothing is to be said. */
std::string advice(ExitCode code, bool somethingWasReceived);

/** The same behind a login that the PLC refused: the line itself works. */
std::string loginAdvice();

} // namespace velk
