#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace velk {

/** What stands for the value of a flag or a word of a command line. */
struct ValueInfo {
    std::string placeholder;          ///< "FILE", "none|even|odd", "1..2"; empty where there is no value
    std::vector<std::string> choices; ///< when only these are taken
};

struct FlagInfo {
    std::vector<std::string> names; ///< "-f", "--file"
    ValueInfo value;
    std::string description;
    std::string group; ///< "Options", "Line" ...
    bool required = false;
};

/** A word that is no flag. */
struct WordInfo {
    std::string name;
    ValueInfo value;
    std::string description;
    bool required = false;
    bool repeated = false;
};

/** A command with its flags, as it is parsed, for help, manual and completions. */
struct CommandInfo {
    std::string name;
    std::string description;
    std::vector<FlagInfo> flags;
    std::vector<WordInfo> words;
    std::vector<CommandInfo> commands;
};

/** Takes a command tree down. */
CommandInfo describeCommand(CLI::App const& app);

FlagInfo describeFlag(CLI::Option const& option);
WordInfo describeWord(CLI::Option const& option);

/** "velk read [OPTION]... [NAME]..." */
std::string usageLine(CommandInfo const& command, std::string const& path);

} // namespace velk
