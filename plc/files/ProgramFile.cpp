#include "plc/files/ProgramFile.h"

#include "plc/files/ProgramTable.h"
#include "plc/files/TomlTable.h"
#include "plc/frames/Text.h"

namespace plc {

FileError::FileError(std::string const& file, int line, std::string const& text)
    : std::runtime_error(line == 0 ? textOf(file, ": ", text) : textOf(file, ":", line, ": ", text)), line_(line) {}

ProgramDescription readProgramFile(std::filesystem::path const& file) {
    return readProgramText(readWholeFile(file.string()), file.string());
}

ProgramDescription readProgramText(std::string_view text, std::string_view name) {
    toml::table const whole = parseToml(text, name);
    TomlTable table(whole, name);
    ProgramDescription program = readProgramTable(table);
    table.finish();
    return program;
}

} // namespace plc
