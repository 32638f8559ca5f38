#pragma once

#include <string>

namespace velk {

/** The version of this program, and what the driver module says about itself. */
std::string versionText();

} // namespace velk
