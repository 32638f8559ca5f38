#pragma once

#include "tools/velk/trace/TraceKind.h"
#include "tools/velk/trace/TraceRecorder.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velk {
struct Context;
}

namespace velk::trace {

/** What the command line says about a trace. */
struct TraceOptions {
    std::optional<std::string> file; ///< without one the trace goes to standard error
    std::optional<TraceKind> format; ///< without one it follows from the file's ending
};

/** The format that the options ask for. Throws CommandError (usage). */
TraceKind chooseKind(TraceOptions const& options);

/**
 * Traces every session of @p context from now on, in addition to any other trace. All of them go to one file, which is
 * opened with the first session. Returns a function that says whether there was a session.
 */
std::function<bool()> wantTrace(Context& context, std::shared_ptr<TraceOptions const> options);

} // namespace velk::trace
