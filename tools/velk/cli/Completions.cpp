#include "tools/velk/cli/Completions.h"

#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>

namespace velk {
namespace {

/** What a shell offers for a value. */
enum class Offer { Nothing, Choices, Files, Folders, Ports };

Offer offerFor(ValueInfo const& value) {
    if (!value.choices.empty()) {
        return Offer::Choices;
    }
    return value.placeholder == "FILE" || value.placeholder == "PROJECT" ? Offer::Files
           : value.placeholder == "DIR"                                  ? Offer::Folders
           : value.placeholder == "PORT"                                 ? Offer::Ports
                                                                         : Offer::Nothing;
}

std::string joined(std::vector<std::string> const& texts, char const* between = " ") {
    return fmt::format("{}", fmt::join(texts, between));
}

std::vector<std::string> commandNames(CommandInfo const& command) {
    std::vector<std::string> names;
    std::transform(command.commands.begin(), command.commands.end(), std::back_inserter(names),
                   [](CommandInfo const& each) { return each.name; });
    return names;
}

std::vector<std::string> flagNames(CommandInfo const& command) {
    std::vector<std::string> names;
    for (FlagInfo const& flag : command.flags) {
        names.insert(names.end(), flag.names.begin(), flag.names.end());
    }
    return names;
}

/** The tree, with the names of commands as choices where one is asked for. */
CommandInfo withCommandsToChoose(CommandInfo tree) {
    std::vector<std::string> const names = commandNames(tree);
    for (CommandInfo& command : tree.commands) {
        for (WordInfo& word : command.words) {
            if (word.value.placeholder == "COMMAND") {
                word.value.choices = names;
            }
        }
    }
    return tree;
}

/** Calls @p visit with every command and its path: "", "read", "config check". */
void forEachCommand(CommandInfo const& command, std::string const& path,
                    std::function<void(CommandInfo const&, std::string const&)> const& visit) {
    visit(command, path);
    for (CommandInfo const& each : command.commands) {
        forEachCommand(each, path.empty() ? each.name : path + " " + each.name, visit);
    }
}

// ---- bash

/** Offers one line of what compgen prints for each name, blanks and all. */
std::string bashReply(std::string const& compgenFlags) {
    return "mapfile -t COMPREPLY < <(compgen " + compgenFlags + ")";
}

std::string bashChoice(std::vector<std::string> const& choices) {
    return bashReply("-W " + shellQuoted(joined(choices)) + " -- \"$cur\"");
}

std::string bashOffer(ValueInfo const& value) {
    switch (offerFor(value)) {
    case Offer::Choices:
        return bashChoice(value.choices);
    case Offer::Files:
        return bashReply("-f -- \"$cur\"");
    case Offer::Folders:
        return bashReply("-d -- \"$cur\"");
    case Offer::Ports:
        return bashReply("-G \"${cur:-/dev/tty}*\"");
    case Offer::Nothing:
        break;
    }
    return "COMPREPLY=()";
}

/** What follows a flag that takes a value. */
std::string bashFlagValues(CommandInfo const& command, std::string const& path) {
    std::string text;
    for (FlagInfo const& flag : command.flags) {
        if (flag.value.placeholder.empty()) {
            continue;
        }
        std::vector<std::string> cases;
        for (std::string const& name : flag.names) {
            cases.push_back(fmt::format("\"{}:{}\"", path, name));
        }
        text +=
            fmt::format("    {})\n        {}\n        return\n        ;;\n", joined(cases, "|"), bashOffer(flag.value));
    }
    return text;
}

std::string bashWords(CommandInfo const& command, std::string const& path) {
    std::string const rest = !command.commands.empty() ? bashChoice(commandNames(command))
                             : !command.words.empty()  ? bashOffer(command.words.front().value)
                                                       : std::string();
    std::string text = fmt::format("    \"{}\")\n", path);
    text += fmt::format("        if [[ $cur == -* ]]; then\n            {}\n", bashChoice(flagNames(command)));
    text += rest.empty() ? std::string() : fmt::format("        else\n            {}\n", rest);
    return text + "        fi\n        ;;\n";
}

// ---- zsh

std::string zshEscaped(std::string const& text) {
    std::string escaped;
    for (char const each : text) {
        escaped +=
            each == '[' || each == ']' || each == ':' || each == '\\' ? std::string("\\") + each : std::string(1, each);
    }
    return escaped;
}

std::string zshAction(ValueInfo const& value) {
    switch (offerFor(value)) {
    case Offer::Choices:
        return "(" + joined(value.choices) + ")";
    case Offer::Files:
        return "_files";
    case Offer::Folders:
        return "_files -/";
    case Offer::Ports:
        return "_files -W /dev -g \"tty*\"";
    case Offer::Nothing:
        break;
    }
    return " ";
}

std::string zshFlag(FlagInfo const& flag) {
    std::string const value = flag.value.placeholder.empty()
                                  ? std::string()
                                  : ":" + zshEscaped(flag.value.placeholder) + ":" + zshAction(flag.value);
    std::string const about = "[" + zshEscaped(flag.description) + "]" + value;
    std::string const group = flag.names.size() > 1 ? "(" + joined(flag.names) + ")" : "";
    std::string text;
    for (std::string const& name : flag.names) {
        text += fmt::format(" \\\n                {}", shellQuoted(fmt::format("{}{}{}", group, name, about)));
    }
    return text;
}

/** Where any word may stand a flag may stand, too; the message of an empty action would keep it from being put in. */
std::string zshWordAction(ValueInfo const& value) {
    return offerFor(value) == Offer::Nothing ? "()" : zshAction(value);
}

std::string zshArguments(CommandInfo const& command) {
    std::string text = "            _arguments -s";
    for (FlagInfo const& flag : command.flags) {
        text += zshFlag(flag);
    }
    for (WordInfo const& word : command.words) {
        text +=
            fmt::format(" \\\n                {}", shellQuoted((word.repeated ? "*:" : ":") + zshEscaped(word.name) +
                                                               ":" + zshWordAction(word.value)));
    }
    if (!command.commands.empty()) {
        text += fmt::format(" \\\n                {}", shellQuoted(":command:(" + joined(commandNames(command)) + ")"));
    }
    return text + "\n            ;;\n";
}

// ---- fish

std::string fishCondition(std::string const& path, CommandInfo const& command) {
    if (path.empty()) {
        return "__fish_use_subcommand";
    }
    std::string condition = "__fish_seen_subcommand_from " + path;
    std::size_t const blank = path.find(' ');
    if (blank != std::string::npos) {
        condition = "__fish_seen_subcommand_from " + path.substr(0, blank) + "; and __fish_seen_subcommand_from " +
                    path.substr(blank + 1);
    } else if (!command.commands.empty()) {
        condition += "; and not __fish_seen_subcommand_from " + joined(commandNames(command));
    }
    return condition;
}

/** Behind the dashes of a trace stands a command line of its own, which fish completes as one. */
constexpr char const* kFishTrace = R"(function __velk_traced
    set -l words (commandline -opc)
    set -l dashes (contains -i -- -- $words); or return
    contains -- trace $words[1..$dashes]; or return
    echo (string escape -- velk $words[(math $dashes + 1)..-1]) (commandline -ct)
end
complete -c velk -n 'string length -q -- (__velk_traced)' -x -a '(complete -C (__velk_traced))'
)";

std::string fishValue(ValueInfo const& value) {
    switch (offerFor(value)) {
    case Offer::Choices:
        return " -x -a " + shellQuoted(joined(value.choices));
    case Offer::Files:
        return " -r -F";
    case Offer::Folders:
        return " -x -a '(__fish_complete_directories)'";
    case Offer::Ports:
        return " -x -a '(ls -d /dev/tty*)'";
    case Offer::Nothing:
        break;
    }
    return value.placeholder.empty() ? "" : " -x";
}

std::string fishCommand(CommandInfo const& command, std::string const& path) {
    std::string const condition = shellQuoted(fishCondition(path, command));
    std::string text;
    for (CommandInfo const& sub : command.commands) {
        text += fmt::format("complete -c velk -n {} -a {} -d {}\n", condition, sub.name, shellQuoted(sub.description));
    }
    for (WordInfo const& word : command.words) {
        std::string const value = fishValue(word.value);
        text += offerFor(word.value) == Offer::Nothing ? std::string()
                                                       : fmt::format("complete -c velk -n {}{}\n", condition, value);
    }
    for (FlagInfo const& flag : command.flags) {
        std::string names;
        for (std::string const& name : flag.names) {
            names += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        }
        text += fmt::format("complete -c velk -n {}{}{} -d {}\n", condition, names, fishValue(flag.value),
                            shellQuoted(flag.description));
    }
    return text;
}

} // namespace

std::string bashCompletion(CommandInfo const& tree) {
    std::string paths;
    std::string values;
    std::string words;
    forEachCommand(withCommandsToChoose(tree), "", [&](CommandInfo const& command, std::string const& path) {
        paths += path.empty() ? "" : "\"" + path + "\"|";
        values += bashFlagValues(command, path);
        words += bashWords(command, path);
    });
    paths.pop_back();
    return fmt::format(R"(# bash completion of velk
_velk() {{
    local cur=${{COMP_WORDS[COMP_CWORD]}} prev=${{COMP_WORDS[COMP_CWORD-1]}} path="" longer word
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        if [[ $path == trace && $word == -- ]]; then
            path="" # a command line of its own
            continue
        fi
        longer="${{path:+$path }}$word"
        case "$longer" in
        {})
            path=$longer
            ;;
        esac
    done
    case "$path:$prev" in
{}    esac
    case "$path" in
{}    esac
}}
complete -o filenames -F _velk velk
)",
                       paths, values, words);
}

std::string zshCompletion(CommandInfo const& tree) {
    std::string paths;
    std::string cases;
    forEachCommand(withCommandsToChoose(tree), "", [&](CommandInfo const& command, std::string const& path) {
        paths += path.empty() ? "" : shellQuoted(path) + "|";
        cases += fmt::format("        {})\n{}", shellQuoted(path), zshArguments(command));
    });
    paths.pop_back();
    return fmt::format(R"(#compdef velk
_velk() {{
    local command="" longer word
    integer at=2
    for word in "${{(@)words[2,CURRENT-1]}}"; do
        if [[ $command == trace && $word == -- ]]; then
            command="" # a command line of its own
            words[2,at]=()
            (( CURRENT -= at - 1, at = 2 ))
            continue
        fi
        longer="${{command:+$command }}$word"
        case "$longer" in
            ({})
                command=$longer
                words[at]=()
                (( CURRENT-- ))
                ;;
            (*)
                (( at++ ))
                ;;
        esac
    done
    case "$command" in
{}    esac
}}
_velk "$@"
)",
                       paths, cases);
}

std::string fishCompletion(CommandInfo const& tree) {
    std::string text = "# fish completion of velk\ncomplete -c velk -f\n";
    text += kFishTrace;
    forEachCommand(withCommandsToChoose(tree), "",
                   [&](CommandInfo const& command, std::string const& path) { text += fishCommand(command, path); });
    return text;
}

} // namespace velk
