#pragma once

#include "tools/velk/context/ExitCode.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace velk {

struct Context;

struct WatchOptions {
    std::vector<std::string> names;
    std::int64_t everyMicroseconds = 500'000;
    std::uint64_t count = 0; ///< rounds; 0: until the user wants the end
    bool json = false;
    std::string csvFile; ///< empty for none
};

/** Reads variables again and again and shows how they change. */
ExitCode runWatch(WatchOptions const& options, Context& context);

void addWatchCommand(CLI::App& app, Context& context);

} // namespace velk
