#pragma once

#include "plc/Line.h"
#include "plc/ProgramFile.h"

#include <filesystem>
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

} // namespace plc
