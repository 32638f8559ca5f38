#pragma once

#include <string>
#include <string_view>

namespace velk {

/** @p bytes as UTF-8: unchanged when they are UTF-8 already, else read as Latin-1. */
std::string toUtf8(std::string_view bytes);

/** The same with control characters written as \xNN, so that it cannot disturb a terminal. */
std::string displayable(std::string_view bytes);

/** @p text as a field of a CSV line: in quotes when it has commas, quotes or line ends in it. */
std::string csvField(std::string_view text);

/** @p text between single quotes of a shell. */
std::string shellQuoted(std::string_view text);

/** @p text as one word of a shell: in quotes where it needs them. */
std::string shellWord(std::string_view text);

/** 1234567 as "1,234,567". */
std::string grouped(unsigned long long number);

/** "1 piece", "2,345 pieces". */
std::string counted(unsigned long long number, std::string_view one, std::string_view many);

} // namespace velk
