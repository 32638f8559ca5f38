#pragma once

#include <string>
#include <string_view>

namespace velk {

/** @p text in upper case; PLC names do not tell the two cases of a letter apart. */
std::string upperCase(std::string_view text);

/** True for a text with "*", "?" or "[" in it. */
bool isPattern(std::string_view text);

/** Whether a name matches a pattern, whatever the case: "*" any characters, "?" one, "[a-c]" one of these. */
bool matches(std::string_view pattern, std::string_view name);

} // namespace velk
