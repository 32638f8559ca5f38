#pragma once

#include "plc/program/ProgramDescription.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace plc {

/// A description file that cannot be read; the text begins with "file:line: ".
class FileError : public std::runtime_error {
public:
    FileError(std::string const& file, int line, std::string const& text);
    [[nodiscard]] int line() const { return line_; }

private:
    int line_;
};

/**
 * Reads the TOML description of a program (docs/simulated-plc.md shows one) and tries it out. Unknown keys, wrong kinds
 * of values and programs that make no sense are FileErrors with their line.
 */
[[nodiscard]] ProgramDescription readProgramFile(std::filesystem::path const& file);
/// The same from a text; `name` stands for the file in messages.
[[nodiscard]] ProgramDescription readProgramText(std::string_view text, std::string_view name);

} // namespace plc
