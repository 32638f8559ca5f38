#include "tools/velk/cli/WordParser.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace velk {
namespace {

CLI::Option* addFlag(CLI::App& parser, Argument const& flag) {
    std::string const names = (flag.shortName.empty() ? "" : flag.shortName + ",") + flag.name;
    return flag.value.text().empty()
               ? parser.add_flag(names)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
               : parser.add_option(names)->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

/** "--port" of "--port=" and of "-qp": flags of one letter may be combined. */
Argument const* lastFlag(Command const& command, std::string const& word) {
    return word.starts_with("--") ? command.findFlag(word.substr(0, word.find('=')))
                                  : command.findFlag(std::string("-") + (word.empty() ? ' ' : word.back()));
}

bool isFlag(std::string const& word) {
    return word.size() > 1 && word.starts_with('-');
}

} // namespace

ParsedWords parseWords(Command const& command, std::span<std::string const> words) {
    CLI::App parser;
    parser.set_help_flag(); // the command has its own
    parser.allow_extras();
    std::vector<CLI::Option*> options;
    for (Argument const& flag : command.flags) {
        options.push_back(addFlag(parser, flag));
    }
    auto const dashes = std::find(words.begin(), words.end(), "--"); // no flag follows, whatever it looks like
    std::vector<std::string> front(words.begin(), dashes);
    std::reverse(front.begin(), front.end()); // the parser takes them from the end
    ParsedWords parsed;
    try {
        parser.parse(front);
    } catch (CLI::ParseError const&) { // nothing else is required
        parsed.openFlag = lastFlag(command, *std::prev(dashes));
        if (parsed.openFlag == nullptr) {
            throw;
        }
    }
    for (std::size_t i = 0; i < options.size(); ++i) {
        if (options[i]->count() > 0) {
            parsed.flags[command.flags[i].name] = options[i]->results();
        }
    }
    for (std::string const& word : parser.remaining()) {
        if (!isFlag(word)) {
            parsed.words.push_back(word);
        } else if (parsed.unknownFlag.empty()) {
            parsed.unknownFlag = word.substr(0, word.find('='));
        }
    }
    if (dashes != words.end()) {
        parsed.words.insert(parsed.words.end(), std::next(dashes), words.end());
    }
    return parsed;
}

} // namespace velk
