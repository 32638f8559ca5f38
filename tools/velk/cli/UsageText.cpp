#include "tools/velk/cli/UsageText.h"

#include "tools/velk/cli/CommandTree.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <algorithm>
#include <string_view>

namespace velk {
namespace {

/** What stands before the first @p sign; all of it when there is none. */
std::string before(std::string const& text, std::string_view sign) {
    return text.substr(0, text.find(sign));
}

std::string behind(std::string const& text, std::string_view sign) {
    std::size_t const at = text.find(sign);
    return at == std::string::npos ? std::string() : text.substr(at + sign.size());
}

/** The command that is meant in the end, and the words that lead to it. */
struct Meant {
    CLI::App const* command;
    std::string path;
};

Meant meant(CLI::App const& app) {
    Meant found{&app, app.get_name()};
    while (true) {
        std::vector<CLI::App*> const chosen = found.command->get_subcommands();
        auto const named =
            std::find_if(chosen.begin(), chosen.end(), [](CLI::App const* each) { return !each->get_name().empty(); });
        if (named == chosen.end()) { // those without a name are groups of flags
            return found;
        }
        found.command = *named;
        found.path += " " + (*named)->get_name();
    }
}

std::string noSuchOption(CLI::App const& command, std::string const& word) {
    std::string const option = before(word, "=");
    std::vector<std::string> known;
    for (FlagInfo const& flag : describeCommand(command).flags) {
        known.insert(known.end(), flag.names.begin(), flag.names.end());
    }
    return "there is no option '" + displayable(option) + "'" +
           (option.starts_with("--") ? didYouMean(option, known) : "");
}

/** What the parser has left over. */
std::string tooManyText(CLI::App const& app, CLI::App const& command) {
    std::vector<std::string> const words = app.remaining(true);
    auto const option = std::find_if(words.begin(), words.end(),
                                     [](std::string const& each) { return each.starts_with('-') && each != "--"; });
    if (option != words.end()) {
        return noSuchOption(command, *option);
    }
    return words.empty() ? "" : "'" + displayable(words.front()) + "' is one word too many";
}

/** The flags that were given of a group that allows one. */
std::string togetherText(CLI::App const& command) {
    std::vector<std::string> given;
    for (CLI::App const* const group :
         command.get_subcommands([](CLI::App const* each) { return each->get_name().empty(); })) {
        for (CLI::Option const* const option : group->get_options()) {
            if (option->count() > 0) {
                given.push_back(option->get_name());
            }
        }
    }
    std::string text;
    for (std::string const& name : given) {
        text += (text.empty() ? "" : " and ") + name;
    }
    return given.size() < 2 ? "" : text + " do not go together";
}

std::string missingText(CLI::App const& app, CLI::App const& command) {
    std::string tooMany = tooManyText(app, command);
    if (tooMany.starts_with("there is no option")) {
        return tooMany;
    }
    if (std::string together = togetherText(command); !together.empty()) {
        return together;
    }
    if (std::vector<std::string> const commands = commandsOf(command); !commands.empty()) {
        return "a command is missing: " + orList(commands);
    }
    std::vector<WordInfo> const words = describeCommand(command).words;
    auto const needed = std::find_if(words.begin(), words.end(), [](WordInfo const& each) { return each.required; });
    return needed == words.end() ? "" : needed->name + " is missing";
}

/** What an option or a word can be, as far as its values are told in the help. */
std::string choicesText(CLI::Option const& option) {
    ValueInfo const value = option.nonpositional() ? describeFlag(option).value : describeWord(option).value;
    if (!value.choices.empty()) {
        return orList(value.choices);
    }
    if (option.get_type_name().ends_with(":POSITIVE")) { // as the parser shows it
        return "a number above 0";
    }
    std::size_t const dots = value.placeholder.find("..");
    return dots == std::string::npos ? ""
                                     : value.placeholder.substr(0, dots) + " to " + value.placeholder.substr(dots + 2);
}

/** A value that is none of those that there are. */
std::string wrongValueText(CLI::App const& command, std::string const& name) {
    CLI::Option const* const option = command.get_option_no_throw(name);
    if (option == nullptr || option->results().empty()) {
        return "";
    }
    std::string const choices = choicesText(*option);
    std::string const shown = option->nonpositional() ? name : describeWord(*option).name;
    return choices.empty() ? ""
                           : shown + " is '" + displayable(option->results().back()) + "'; it has to be " + choices;
}

std::string noNumberText(CLI::App const& command, std::string const& what) {
    std::string const rest = behind(what, "Could not convert: ");
    std::string const name = before(rest, " = ");
    CLI::Option const* const option = command.get_option_no_throw(name);
    bool const flag = option != nullptr && option->get_items_expected_max() == 0;
    return flag ? name + " takes no value"
                : name + " is '" + displayable(behind(rest, " = ")) + "'; it has to be a whole number";
}

std::string countText(CLI::App const& command, std::string const& what) {
    std::string const name = before(what, ":");
    CLI::Option const* const option = command.get_option_no_throw(name);
    if (option == nullptr) {
        return before(what, " was given") + " takes no value";
    }
    return option->count() > 1 ? name + " is given more than once"
                               : name + " needs a value: " + describeFlag(*option).value.placeholder;
}

/** What is wrong with the words, in place of the parser's own text; empty where that is right. */
std::string reasonText(CLI::App const& app, CLI::App const& command, CLI::Error const& error) {
    std::string const what = error.what();
    switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) { // its name is not always that of its kind
    case CLI::ExitCodes::ExtrasError:
        return tooManyText(app, command);
    case CLI::ExitCodes::RequiredError:
        return missingText(app, command);
    case CLI::ExitCodes::ExcludesError:
        return before(what, " excludes ") + " and " + behind(what, " excludes ") + " do not go together";
    case CLI::ExitCodes::RequiresError:
        return before(what, " requires ") + " needs " + behind(what, " requires ");
    case CLI::ExitCodes::ArgumentMismatch:
        return countText(command, what);
    case CLI::ExitCodes::ConversionError:
        return noNumberText(command, what);
    case CLI::ExitCodes::ValidationError:
        return wrongValueText(command, before(what, ":"));
    default:
        return "";
    }
}

} // namespace

std::vector<std::string> commandsOf(CLI::App const& app) {
    std::vector<std::string> names;
    for (CLI::App const* each : app.get_subcommands([](CLI::App const*) { return true; })) {
        if (!each->get_name().empty()) { // those without a name are groups of flags
            names.push_back(each->get_name());
        }
    }
    return names;
}

std::string usageText(CLI::App const& app, CLI::Error const& error) {
    auto const [command, path] = meant(app);
    std::string const reason = reasonText(app, *command, error);
    return (reason.empty() ? std::string(error.what()) : reason) + "\n" + path + " --help tells what it takes";
}

} // namespace velk
