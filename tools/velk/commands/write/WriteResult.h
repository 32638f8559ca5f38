#pragma once

#include "tools/velk/commands/write/Change.h"
#include "tools/velk/commands/write/StationNaming.h"

#include <span>
#include <string>
#include <vector>

namespace velk {

/** The results of the changes, as a table. */
std::string resultText(std::span<Change const> changes, StationNaming const& naming);

/** The same as JSON. */
std::string resultJson(std::span<Change const> changes);

/** Further messages: likely causes of failures, and what to do. */
std::vector<std::string> complaintsOf(std::span<Change const> changes, StationNaming const& naming);

} // namespace velk
