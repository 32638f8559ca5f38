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
    std::optional<TraceKind> format; ///< without one the file's ending tells
};

/** The format that the options ask for. Throws CommandError (usage). */
TraceKind chooseKind(TraceOptions const& options);

/**
 * Has every session of @p context traced from now on, beside any trace that is wanted already. All of them go to one
 * file, which is opened with the first session. Answers a question: whether there was one.
 */
std::function<bool()> wantTrace(Context& context, std::shared_ptr<TraceOptions const> options);

} // namespace velk::trace
