#pragma once

#include "tools/velk/line/Readings.h"

#include <CLI/CLI.hpp>

namespace velk {

/** Lets a command take --json and --csv; @p format must outlive the parsing. */
void addFormatOptions(CLI::App& command, OutputFormat& format);

} // namespace velk
