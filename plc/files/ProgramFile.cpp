#include "plc/files/ProgramFile.h"

#include "base/TomlSection.h"
#include "base/WholeFile.h"
#include "plc/files/ProgramTable.h"
#include "plc/frames/Text.h"

namespace plc {

ProgramDescription readProgramFile(std::filesystem::path const& file) {
    return readProgramText(readDescription(file), file.string());
}

ProgramDescription readProgramText(std::string_view text, std::string const& name) {
    return base::readToml(text, base::Complaints(name), "a program", readProgramTable);
}

std::string readDescription(std::filesystem::path const& file) {
    constexpr std::size_t kMostBytes = 16UL * 1024 * 1024;
    auto text = base::readWholeFile(file, kMostBytes);
    if (!text.ok()) {
        throw base::FileError({textOf(file.string(), ": ", text.failure().text)});
    }
    return std::move(text.value());
}

} // namespace plc
