#pragma once

#include "plc/files/ProgramFile.h"
#include "plc/line/Line.h"
#include "plc/station/Faults.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace plc {

/**
 * Reads the TOML description of a whole line: framing, pace, stations, their programs (in the file itself or in files
 * of their own, relative to it) and their faults. Everything wrong in it is a FileError with its line.
 */
[[nodiscard]] LineDescription readLineFile(std::filesystem::path const& file);
/// The same from a text; programs in files of their own are sought in `folder`.
[[nodiscard]] LineDescription readLineText(std::string_view text, std::string_view name,
                                           std::filesystem::path const& folder = {});

/// Whether a text describes a line, or at least tries to: it names a framing or stations. A program does neither.
[[nodiscard]] bool isLineText(std::string_view text, std::string_view name);

/// Whether a text has a key, such as "line", at its top.
[[nodiscard]] bool hasKey(std::string_view text, std::string_view name, std::string_view key);

/// The content of a description file; FileError when it cannot be read.
[[nodiscard]] std::string readDescription(std::filesystem::path const& file);

/// A rule of misbehaviour as it stands between the braces of a description file: `kind = "late", nth = 3`.
[[nodiscard]] FaultRule readFaultText(std::string_view text, std::string_view name);

} // namespace plc
