#include "tools/velk/cli/Help.h"

#include "tools/velk/text/Wrapping.h"

#include <algorithm>
#include <utility>

namespace velk {
namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kColumn = 26; // where descriptions begin

/** Headings with the text below them, in order. */
using Sections = std::vector<std::pair<std::string, std::string>>;

/** Adds a name in the left column and what it means in the right one. */
void add(Sections& sections, std::string const& heading, std::string const& name, std::string const& description) {
    auto section =
        std::find_if(sections.begin(), sections.end(), [&](auto const& each) { return each.first == heading; });
    if (section == sections.end()) {
        section = sections.insert(section, {heading, ""});
    }
    std::string text = "  " + name;
    bool const fits = text.size() + 2 <= kColumn;
    text += fits ? std::string(kColumn - text.size(), ' ') : "\n" + std::string(kColumn, ' ');
    section->second += text + wrapped(description, kColumn, kWidth) + "\n";
}

std::string flagName(Argument const& flag) {
    std::string const names = (flag.shortName.empty() ? "    " : flag.shortName + ", ") + flag.name;
    return names + (flag.value.text().empty() ? "" : " " + flag.value.text());
}

} // namespace

std::string helpText(Command const& command, std::string const& path) {
    Sections sections;
    for (Argument const& word : command.words) {
        add(sections, "Words", word.name, word.text());
    }
    for (Command const& each : command.commands) {
        add(sections, "Commands", each.name, each.description);
    }
    for (Argument const& flag : command.flags) {
        add(sections, flag.group, flagName(flag), flag.text());
    }
    std::string text = "Usage: " + usageLine(command, path) + "\n\n" + wrapped(command.description, 0, kWidth) + "\n";
    for (auto const& [heading, entries] : sections) {
        text.append("\n").append(heading).append(":\n").append(entries);
    }
    return text;
}

} // namespace velk
