#include "tools/velk/cli/CommandTree.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace velk {
namespace {

/** The words of "TEXT:{none,even,odd}", which is how the parser shows a choice. */
std::vector<std::string> choicesIn(std::string const& typeName) {
    std::size_t const opening = typeName.find('{');
    std::size_t const closing = typeName.find('}');
    std::vector<std::string> choices;
    if (opening == std::string::npos || closing == std::string::npos || closing < opening) {
        return choices;
    }
    std::string_view rest(typeName);
    rest = rest.substr(opening + 1, closing - opening - 1);
    while (true) {
        std::size_t const comma = rest.find(',');
        choices.emplace_back(rest.substr(0, comma));
        if (comma == std::string_view::npos) {
            return choices;
        }
        rest.remove_prefix(comma + 1);
    }
}

/** "1..2" of ":INT in [1 - 2]", which is how the parser shows a range; empty for what is none. */
std::string rangeIn(std::string const& typeName) {
    std::size_t const opening = typeName.find(" in [");
    std::size_t const dash = typeName.find(" - ", opening == std::string::npos ? typeName.size() : opening);
    std::size_t const closing = typeName.find(']', dash == std::string::npos ? typeName.size() : dash);
    if (closing == std::string::npos) {
        return "";
    }
    constexpr std::size_t kIn = 5;
    constexpr std::size_t kDash = 3;
    return typeName.substr(opening + kIn, dash - opening - kIn) + ".." +
           typeName.substr(dash + kDash, closing - dash - kDash);
}

std::string joinedWith(std::vector<std::string> const& texts, char const* between) {
    std::string joined;
    for (std::string const& text : texts) {
        joined += (joined.empty() ? "" : between) + text;
    }
    return joined;
}

/** Behind a colon the parser tells what a value is checked for; "TIME[:FILE]" has one within. */
std::size_t endOfPlaceholder(std::string const& typeName) {
    std::size_t colon = typeName.find(':');
    while (colon != std::string::npos && colon > 0 && typeName[colon - 1] == '[') {
        colon = typeName.find(':', colon + 1);
    }
    return colon;
}

ValueInfo describeValue(CLI::Option const& option) {
    ValueInfo value;
    if (option.get_items_expected_max() == 0) {
        return value;
    }
    std::string const typeName = option.get_type_name();
    value.choices = choicesIn(typeName);
    std::string const range = rangeIn(typeName);
    std::string const plain = typeName.substr(0, endOfPlaceholder(typeName));
    value.placeholder = !value.choices.empty() ? joinedWith(value.choices, "|")
                        : !range.empty()       ? range
                        : !plain.empty()       ? plain
                                               : "VALUE";
    return value;
}

std::string wordText(WordInfo const& word) {
    std::string const name = word.name;
    std::string const text = word.required ? name : "[" + name + "]";
    return text + (word.repeated ? "..." : "");
}

std::vector<CLI::App const*> subcommandsOf(CLI::App const& app) {
    return app.get_subcommands([](CLI::App const*) { return true; });
}

bool isOptionGroup(CLI::App const& app) {
    return app.get_name().empty();
}

void describeOptions(CLI::App const& app, CommandInfo& command) {
    for (CLI::Option const* const option : app.get_options()) {
        bool const hidden = option->get_group().empty();
        bool const helpOfTheGroup = isOptionGroup(app) && option == app.get_help_ptr();
        if (hidden || helpOfTheGroup) {
            continue;
        }
        if (option->nonpositional()) {
            command.flags.push_back(describeFlag(*option));
        } else {
            command.words.push_back(describeWord(*option));
        }
    }
}

/** Flags of which only one may be given are in a group of their own, which is a nameless command to the library. */
void describeOptionGroup(CLI::App const& group, CommandInfo& command) {
    std::size_t const first = command.flags.size();
    describeOptions(group, command);
    for (std::size_t i = first; i < command.flags.size(); ++i) {
        command.flags[i].group = group.get_group();
    }
}

} // namespace

FlagInfo describeFlag(CLI::Option const& option) {
    FlagInfo flag;
    for (std::string const& name : option.get_snames()) {
        flag.names.push_back("-" + name);
    }
    for (std::string const& name : option.get_lnames()) {
        flag.names.push_back("--" + name);
    }
    flag.value = describeValue(option);
    flag.description = option.get_description();
    flag.group = option.get_group();
    flag.required = option.get_required();
    return flag;
}

WordInfo describeWord(CLI::Option const& option) {
    WordInfo word;
    word.value = describeValue(option);
    std::string const typeName = option.get_type_name();
    bool const named = word.value.choices.empty() && !typeName.empty() && typeName != "TEXT";
    word.name = named ? word.value.placeholder : option.get_name(true);
    std::transform(word.name.begin(), word.name.end(), word.name.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    word.description = option.get_description();
    word.required = option.get_required();
    word.repeated = option.get_items_expected_max() > 1;
    return word;
}

CommandInfo describeCommand(CLI::App const& app) {
    CommandInfo command;
    command.name = app.get_name();
    command.description = app.get_description();
    describeOptions(app, command);
    for (CLI::App const* const sub : subcommandsOf(app)) {
        if (isOptionGroup(*sub)) {
            describeOptionGroup(*sub, command);
        } else if (!sub->get_group().empty()) {
            command.commands.push_back(describeCommand(*sub));
        }
    }
    return command;
}

std::string usageLine(CommandInfo const& command, std::string const& path) {
    std::string line = path + " [OPTION]...";
    for (WordInfo const& word : command.words) {
        line += " " + wordText(word);
    }
    return line + (command.commands.empty() ? "" : " COMMAND ...");
}

} // namespace velk
