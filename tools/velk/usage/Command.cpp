#include "tools/velk/usage/Command.h"

#include "tools/velk/text/Names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

namespace velk {
namespace {

template <typename Part>
Part const* find(std::vector<Part> const& parts, std::function<bool(Part const&)> const& isMeant) {
    auto const found = std::find_if(parts.begin(), parts.end(), isMeant);
    return found == parts.end() ? nullptr : &*found;
}

} // namespace

std::string Value::text() const {
    if (!choices.empty()) {
        return fmt::format("{}", fmt::join(choices, "|"));
    }
    return range ? fmt::format("{}..{}", range->least, range->most) : placeholder;
}

std::string Argument::text() const {
    return rules.byDefault.empty() ? description : description + "; " + rules.byDefault + " by default";
}

std::vector<std::string> Argument::names() const {
    return shortName.empty() ? std::vector{name} : std::vector{shortName, name};
}

std::string Argument::accept(std::string const& given) const {
    auto const& [placeholder, choices, range, offer] = value;
    auto const choice =
        std::find_if(choices.begin(), choices.end(), [&](std::string const& each) { return sameName(each, given); });
    std::optional<int> const number = wholeNumber<int>(given);
    if (!choices.empty() && choice == choices.end()) {
        return "'" + given + "' is wrong; it must be " + orList(choices);
    }
    if (range && !(number && range->least <= *number && *number <= range->most)) {
        return fmt::format("'{}' is wrong; it must be {} to {}", given, range->least, range->most);
    }
    return take(choices.empty() ? given : *choice);
}

Argument flag(std::string const& names, Value value, std::string description, Take take, Rules rules) {
    std::size_t const comma = names.find(',');
    Argument argument =
        word(names.substr(comma + 1), std::move(value), std::move(description), std::move(take), std::move(rules));
    argument.shortName = comma == std::string::npos ? "" : names.substr(0, comma);
    return argument;
}

Argument word(std::string name, Value value, std::string description, Take take, Rules rules) {
    return {std::move(name), "", std::move(value), std::move(description), std::move(take), std::move(rules)};
}

Command const* Command::findCommand(std::string const& called) const {
    return find<Command>(commands, [&](Command const& each) { return each.name == called; });
}

Argument const* Command::findFlag(std::string const& called) const {
    return find<Argument>(flags, [&](Argument const& each) { return each.name == called || each.shortName == called; });
}

std::vector<std::string> Command::commandNames() const {
    std::vector<std::string> names;
    for (Command const& each : commands) {
        names.push_back(each.name);
    }
    return names;
}

std::string usageLine(Command const& command, std::string const& path) {
    std::string line = path + " [OPTION]...";
    for (Argument const& word : command.words) {
        line += (word.rules.required ? " " + word.name : " [" + word.name + "]") + (word.rules.repeats ? "..." : "");
    }
    return line + (command.commands.empty() ? "" : " COMMAND ...");
}

Argument& flagNamed(std::vector<Argument>& flags, std::string const& name) {
    return *std::find_if(flags.begin(), flags.end(), [&](Argument const& each) { return each.name == name; });
}

void appendFlags(std::vector<Argument>& flags, std::vector<Argument> more, std::string const& group) {
    for (Argument& each : more) {
        each.group = group.empty() ? each.group : group;
        flags.push_back(std::move(each));
    }
}

} // namespace velk
