#pragma once

#include "base/Complaints.h"
#include "plc/program/ProgramDescription.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace plc {

/**
 * Reads the TOML description of a program (docs/simulated-plc.md shows one) and builds it once as a test. Unknown keys,
 * wrong kinds of values and invalid programs are complaints of a base::FileError, with their places.
 */
[[nodiscard]] ProgramDescription readProgramFile(std::filesystem::path const& file);
/// The same from a text; `name` is the name of the file in messages.
[[nodiscard]] ProgramDescription readProgramText(std::string_view text, std::string const& name);

/// The content of a description file; base::FileError when it cannot be read.
[[nodiscard]] std::string readDescription(std::filesystem::path const& file);

} // namespace plc
