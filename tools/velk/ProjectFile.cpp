#include "tools/velk/ProjectFile.h"

#include <utility>

namespace velk {
namespace {

std::string joined(std::vector<std::string> const& lines) {
    std::string text;
    for (std::string const& line : lines) {
        text += (text.empty() ? "" : "\n") + line;
    }
    return text;
}

} // namespace

ProjectFileError::ProjectFileError(std::vector<std::string> complaints)
    : std::runtime_error(joined(complaints)), complaints_(std::move(complaints)) {}

Project readProjectFile(std::filesystem::path const& file) {
    throw ProjectFileError({file.string() + ": project files cannot be read yet"});
}

} // namespace velk
