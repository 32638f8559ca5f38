#include "tools/velk/cli/MisplacedFlag.h"

#include "tools/velk/text/Text.h"

#include <algorithm>
#include <vector>

namespace velk {
namespace {

/** "--node" of "--node=2", "-n" of "-n2". */
std::string flagName(std::string const& word) {
    constexpr std::size_t kShort = 2;
    return word.starts_with("--") ? word.substr(0, word.find('=')) : word.substr(0, kShort);
}

bool knows(CLI::App const& command, std::string const& flag) {
    return command.get_option_no_throw(flag) != nullptr;
}

std::vector<CLI::App const*> subcommandsOf(CLI::App const& at) {
    return at.get_subcommands([](CLI::App const* each) { return !each->get_name().empty(); });
}

CLI::App const* commandNamed(CLI::App const& at, std::string const& word) {
    std::vector<CLI::App const*> const commands = subcommandsOf(at);
    auto const found =
        std::find_if(commands.begin(), commands.end(), [&](CLI::App const* each) { return each->get_name() == word; });
    return found == commands.end() ? nullptr : *found;
}

bool anyKnows(CLI::App const& at, std::string const& flag) {
    std::vector<CLI::App const*> const commands = subcommandsOf(at);
    return std::any_of(commands.begin(), commands.end(),
                       [&](CLI::App const* each) { return knows(*each, flag) || anyKnows(*each, flag); });
}

void append(std::string& line, std::span<std::string const> words) {
    for (std::string const& word : words) {
        line += " " + displayable(shellWord(word));
    }
}

/** The words with the commands in front; empty when those do not know the flag. */
std::string inOrder(CLI::App const& at, std::string const& path, std::span<std::string const> words) {
    auto const first =
        std::find_if(words.begin(), words.end(), [&](std::string const& word) { return commandNamed(at, word); });
    CLI::App const* command = &at;
    auto last = first;
    for (; last != words.end() && commandNamed(*command, *last) != nullptr; ++last) {
        command = commandNamed(*command, *last);
    }
    if (command == &at || !knows(*command, flagName(words.front()))) {
        return "";
    }
    std::string line = path;
    append(line, {first, last});
    append(line, {words.begin(), first});
    append(line, {last, words.end()});
    return line;
}

} // namespace

std::string misplacedFlag(CLI::App const& at, std::string const& path, std::span<std::string const> words) {
    std::string const name = flagName(words.front());
    if (knows(at, name)) {
        return "";
    }
    if (std::string const line = inOrder(at, path, words); !line.empty()) {
        return "'" + displayable(name) + "' belongs behind the command: " + line;
    }
    return anyKnows(at, name)
               ? "'" + displayable(name) + "' belongs behind a command\n" + path + " --help lists the commands"
               : "there is no option '" + displayable(name) + "'\n" + path + " --help tells what it takes";
}

} // namespace velk
