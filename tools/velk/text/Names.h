#pragma once

#include "base/Names.h"

#include <string_view>

namespace velk {

using base::andList;
using base::didYouMean;
using base::orList;
using base::sameName;
using base::similarNames;
using base::upperCase;

/** True for a text with "*", "?" or "[" in it. */
bool isPattern(std::string_view text);

/** Whether a name matches a pattern, whatever the case: "*" any characters, "?" one, "[a-c]" one of these. */
bool matches(std::string_view pattern, std::string_view name);

} // namespace velk
