#pragma once

#include "tools/velk/trace/TraceOutput.h"
#include "tools/velk/usage/Command.h"

#include <memory>
#include <string>
#include <vector>

namespace velk {

struct Context;

/** --trace FILE and --trace-format. */
std::vector<Argument> traceFlags(Context& context);

/** The format of a trace, as a flag of the given name. */
Argument traceFormatFlag(std::string const& name, std::shared_ptr<trace::TraceOptions> const& options);

} // namespace velk
