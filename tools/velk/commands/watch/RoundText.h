#pragma once

#include "tools/velk/commands/watch/WatchTable.h"
#include "tools/velk/line/Readings.h"

#include <span>
#include <string>

namespace velk {

/** The name of a variable in a separate line, after its station when there are several. */
std::string lineName(Tag const& tag, bool stations);

/** A line for each reading of a round; one that is not good says why. */
std::string roundLines(std::span<Reading const> readings, bool stations);

/** A round as one line of JSON. */
std::string roundJson(WatchHeader const& header, std::chrono::system_clock::time_point now,
                      std::span<Reading const> readings);

} // namespace velk
