#pragma once

#include "tools/velk/trace/TraceFormat.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace velk::trace {

enum class TraceKind {
    Text,      ///< lines for people
    JsonLines, ///< a JSON object a line
    Pcapng,    ///< a capture file for packet analysers
};

/** "text", "jsonl" or "pcapng". */
std::optional<TraceKind> traceKindNamed(std::string_view name);

/** By the ending of the file's name: .txt or .log, .jsonl or .json, .pcapng. */
std::optional<TraceKind> traceKindOf(std::filesystem::path const& file);

std::unique_ptr<TraceFormat> makeTraceFormat(TraceKind kind);

} // namespace velk::trace
