#pragma once

#include "tools/velk/commands/check/CheckReport.h"

#include <string>

namespace velk {

/** A check or a scan as a JSON document. */
std::string checkJson(CheckReport const& report);
std::string scanJson(ScanReport const& report);

} // namespace velk
