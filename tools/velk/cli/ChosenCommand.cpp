#include "tools/velk/cli/ChosenCommand.h"

#include "tools/velk/context/CommandError.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <algorithm>

namespace velk {
namespace {

[[noreturn]] void refuse(std::string const& text) {
    throw CommandError(ExitCode::Usage, text);
}

bool anyKnows(Command const& at, std::string const& flag) {
    return at.findFlag(flag) != nullptr || std::any_of(at.commands.begin(), at.commands.end(),
                                                       [&](Command const& each) { return anyKnows(each, flag); });
}

void append(std::string& line, std::span<std::string const> words) {
    for (std::string const& word : words) {
        line += " " + displayable(shellWord(word));
    }
}

/** A flag where a command is expected: either it belongs after one, or it does not exist. */
[[noreturn]] void refuseFlag(ChosenCommand const& at) {
    auto const& words = at.words;
    std::string const name = flagName(words.front());
    std::string const shown = "'" + displayable(name) + "'";
    auto const first = std::find_if(words.begin(), words.end(),
                                    [&](std::string const& word) { return at.command->findCommand(word) != nullptr; });
    auto last = first;
    Command const* meant = at.command;
    while (last != words.end() && meant->findCommand(*last) != nullptr) {
        meant = meant->findCommand(*last++);
    }
    if (meant->findFlag(name) != nullptr) {
        std::string line = at.path;
        append(line, {first, last});
        append(line, {words.begin(), first});
        append(line, {last, words.end()});
        refuse(shown + " belongs after the command: " + line);
    }
    refuse(anyKnows(*at.command, name)
               ? shown + " belongs after a command\n" + at.path + " --help lists the commands"
               : "there is no option " + shown + "\n" + at.path + " --help lists what it takes");
}

} // namespace

std::string flagName(std::string const& word) {
    constexpr std::size_t kShort = 2;
    return word.starts_with("--") ? word.substr(0, word.find('=')) : word.substr(0, kShort);
}

ChosenCommand chooseCommand(Command const& root, std::span<std::string const> words) {
    ChosenCommand chosen{&root, root.name, words};
    while (!chosen.command->commands.empty() && !chosen.words.empty()) {
        std::string const& word = chosen.words.front();
        if (word.starts_with('-')) {
            if (chosen.command->findFlag(flagName(word)) == nullptr) {
                refuseFlag(chosen);
            }
            return chosen;
        }
        Command const* const next = chosen.command->findCommand(word);
        if (next == nullptr) {
            refuse("there is no command '" + displayable(word) + "'" +
                   didYouMean(word, chosen.command->commandNames()) + "\n" + chosen.path +
                   " --help lists the commands");
        }
        chosen = {next, chosen.path + " " + word, chosen.words.subspan(1)};
    }
    return chosen;
}

} // namespace velk
