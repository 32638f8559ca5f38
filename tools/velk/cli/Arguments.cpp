#include "tools/velk/cli/Arguments.h"

#include "tools/velk/context/CommandError.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <algorithm>
#include <map>
#include <utility>

namespace velk {
namespace {

/** The values given for an argument. */
struct Given {
    Argument const* argument;
    std::vector<std::string> values;
};

/** Words are assigned to arguments by position; one that repeats takes all that are left. */
std::vector<Given> giveWords(Command const& command, std::vector<std::string> const& words) {
    std::vector<Given> given;
    for (std::size_t i = 0; i < std::min(command.words.size(), words.size()); ++i) {
        Argument const& argument = command.words[i];
        auto const first = words.begin() + static_cast<std::ptrdiff_t>(i);
        given.push_back({&argument, {first, argument.rules.repeats ? words.end() : std::next(first)}});
    }
    return given;
}

std::string tooMany(Command const& command, std::vector<std::string> const& words) {
    bool const endless = !command.words.empty() && command.words.back().rules.repeats;
    bool const fit = endless || words.size() <= command.words.size();
    return fit ? "" : "'" + displayable(words[command.words.size()]) + "' is one word too many";
}

std::string noSuchFlag(Command const& command, std::string const& name) {
    std::vector<std::string> known;
    for (Argument const& flag : command.flags) {
        known.push_back(flag.name);
    }
    return "there is no option '" + displayable(name) + "'" + (name.starts_with("--") ? didYouMean(name, known) : "");
}

std::string missing(Command const& command, std::vector<Given> const& given) {
    if (!command.commands.empty()) {
        return "a command is missing: " + orList(command.commandNames());
    }
    for (Argument const& word : command.words) {
        bool const isGiven =
            std::any_of(given.begin(), given.end(), [&](Given const& each) { return each.argument == &word; });
        if (word.rules.required && !isGiven) {
            return word.name + " is missing";
        }
    }
    return "";
}

/** Flags that exclude each other, or that need another flag. */
std::string conflict(std::vector<Given> const& given, ParsedWords const& parsed) {
    std::map<std::string, std::string> groups;
    for (auto const& [argument, values] : given) {
        auto const [known, isFirst] = groups.emplace(argument->rules.oneOf, argument->name);
        if (!argument->rules.oneOf.empty() && !isFirst) {
            return known->second + " and " + argument->name + " do not go together";
        }
        if (!argument->rules.needs.empty() && !parsed.flags.contains(argument->rules.needs)) {
            return argument->name + " needs " + argument->rules.needs;
        }
    }
    return "";
}

std::string takeAll(Given const& given) {
    auto const& [argument, values] = given;
    bool const isSwitch = argument->name.starts_with('-') && argument->value.text().empty();
    if (isSwitch && values.back() != "true") {
        return argument->name + " takes no value";
    }
    if (values.size() > 1 && !argument->rules.repeats && !isSwitch) {
        return argument->name + " is given more than once";
    }
    for (std::string const& value : values) {
        if (std::string const fault = argument->accept(value); !fault.empty()) {
            return argument->name + ": " + displayable(fault);
        }
    }
    return "";
}

} // namespace

void takeArguments(ChosenCommand const& chosen, ParsedWords const& parsed) {
    Command const& command = *chosen.command;
    auto const refuseIf = [&](std::string const& fault) {
        if (!fault.empty()) {
            throw CommandError(ExitCode::Usage, fault + "\n" + chosen.path + " --help lists what it takes");
        }
    };
    if (parsed.openFlag != nullptr) {
        refuseIf(parsed.openFlag->name + " needs a value: " + parsed.openFlag->value.text());
    }
    refuseIf(parsed.unknownFlag.empty() ? "" : noSuchFlag(command, parsed.unknownFlag));
    refuseIf(tooMany(command, parsed.words));
    std::vector<Given> given = giveWords(command, parsed.words);
    for (Argument const& flag : command.flags) {
        if (auto const values = parsed.flags.find(flag.name); values != parsed.flags.end()) {
            given.push_back({&flag, values->second});
        }
    }
    refuseIf(conflict(given, parsed));
    refuseIf(missing(command, given));
    for (Given const& each : given) {
        refuseIf(takeAll(each));
    }
}

} // namespace velk
