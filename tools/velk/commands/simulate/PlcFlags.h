#pragma once

#include "plc/station/Faults.h"

#include <optional>
#include <string>
#include <string_view>

namespace velk::simulation {

/** "1%", "0.1 %" or "0.01" as a share from 0 to 1, or nothing. */
std::optional<double> parseShare(std::string_view text);

/** What is wrong with a share; empty when nothing is. */
std::string shareFault(std::string const& text);

/**
 * "5s@60s": for 5 s, for the first time after 60 s, and again every 60 s. "5s@60s/5min" again every 5 minutes,
 * "5s@60s/once" never again. "always" has no end. Nothing for anything else.
 */
std::optional<plc::TimeWindow> parseSilence(std::string_view text);

/** "30s" or "30s:other.toml". */
struct Replacement {
    plc::Micros after{};
    std::string file; ///< empty: the same program under another project identifier
};
std::optional<Replacement> parseReplacement(std::string_view text);

/** A time such as "30s", or nothing. */
std::optional<plc::Micros> parseTime(std::string_view text);

} // namespace velk::simulation
