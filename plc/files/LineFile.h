#pragma once

#include "plc/files/ProgramFile.h"
#include "plc/line/Line.h"
#include "plc/station/Faults.h"

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>

namespace plc {

/**
 * Reads the TOML description of a whole line: framing, pace, stations, their programs (in the file itself or in
 * separate files, relative to it) and their faults. Every error is a complaint of a base::FileError, with its place.
 */
[[nodiscard]] LineDescription readLineFile(std::filesystem::path const& file);
/// The same from a text; separate program files are searched in `folder`.
[[nodiscard]] LineDescription readLineText(std::string_view text, std::string const& name,
                                           std::filesystem::path const& folder = {});

/// Whether a text describes a line, or at least tries to: it names a framing or stations. A program does not.
[[nodiscard]] bool isLineText(std::string_view text, std::string const& name);

/// Whether a text has one of these keys, such as "line", at its top level.
[[nodiscard]] bool hasAnyKey(std::string_view text, std::string const& name,
                             std::initializer_list<std::string_view> keys);

/// A fault rule as written between the braces of a description file: `kind = "late", nth = 3`.
[[nodiscard]] FaultRule readFaultText(std::string_view text, std::string const& name);

} // namespace plc
