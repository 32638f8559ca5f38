#include "tools/velk/cli/HelpFormatter.h"

#include "tools/velk/text/Wrapping.h"

#include <algorithm>

namespace velk {
namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kColumn = 26; // where descriptions begin

/** A name in the left column and what it means in the right one. */
std::string entry(std::string const& name, std::string const& description) {
    std::string text = "  " + name;
    bool const fits = text.size() + 2 <= kColumn;
    text += fits ? std::string(kColumn - text.size(), ' ') : "\n" + std::string(kColumn, ' ');
    return text + wrapped(description, kColumn, kWidth) + "\n";
}

std::string flagName(FlagInfo const& flag) {
    std::string name = flag.names.size() == 1 && flag.names[0].starts_with("--") ? "    " : "";
    for (std::string const& each : flag.names) {
        name += (&each == &flag.names.front() ? "" : ", ") + each;
    }
    return name + (flag.value.placeholder.empty() ? "" : " " + flag.value.placeholder);
}

std::vector<std::string> groupsOf(CommandInfo const& command) {
    std::vector<std::string> groups;
    for (FlagInfo const& flag : command.flags) {
        if (std::find(groups.begin(), groups.end(), flag.group) == groups.end()) {
            groups.push_back(flag.group);
        }
    }
    return groups;
}

std::string section(std::string const& title, std::string const& entries) {
    return entries.empty() ? std::string() : "\n" + title + ":\n" + entries;
}

} // namespace

std::string helpText(CommandInfo const& command, std::string const& path) {
    std::string text = "Usage: " + usageLine(command, path) + "\n\n" + wrapped(command.description, 0, kWidth) + "\n";
    std::string words;
    for (WordInfo const& word : command.words) {
        words += entry(word.name, word.description);
    }
    text += section("Words", words);
    std::string commands;
    for (CommandInfo const& each : command.commands) {
        commands += entry(each.name, each.description);
    }
    text += section("Commands", commands);
    for (std::string const& group : groupsOf(command)) {
        std::string flags;
        for (FlagInfo const& flag : command.flags) {
            flags += flag.group == group ? entry(flagName(flag), flag.description) : "";
        }
        text += section(group, flags);
    }
    return text;
}

std::string HelpFormatter::make_help(CLI::App const* app, std::string name, CLI::AppFormatMode /*mode*/) const {
    std::string const footer = app->get_footer();
    return helpText(describeCommand(*app), name) + (footer.empty() ? "" : "\n" + footer + "\n");
}

} // namespace velk
