#pragma once

#include "tools/velk/usage/Command.h"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace velk {

/** The words after a command, by their purpose. */
struct ParsedWords {
    std::map<std::string, std::vector<std::string>> flags; ///< values by name; "true" of a flag without one
    std::vector<std::string> words;
    std::string unknownFlag{};          ///< the first one; empty for none
    Argument const* openFlag = nullptr; ///< the one whose value is missing after the last word; null for none
};

/** Nothing is checked here: neither whether a value is right, nor what is missing or given twice. */
ParsedWords parseWords(Command const& command, std::span<std::string const> words);

} // namespace velk
