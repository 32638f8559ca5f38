#pragma once

#include "tools/velk/trace/TraceOutput.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace velk {

struct Context;

/** Lets a command take --trace FILE and --trace-format. */
void addTraceOption(CLI::App& command, Context& context);

/** Lets a command take the format of a trace with @p flag. */
void addTraceFormatOption(CLI::App& command, std::string const& flag,
                          std::shared_ptr<trace::TraceOptions> const& options);

} // namespace velk
