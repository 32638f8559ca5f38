#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace base {

/** @p text in upper case; PLC names ignore case. */
std::string upperCase(std::string_view text);

/** Whether both are the same, ignoring case. */
bool sameName(std::string_view one, std::string_view other);

/** The @p candidates similar to @p name, the most likely first; at most @p most. */
std::vector<std::string> similarNames(std::string_view name, std::span<std::string const> candidates,
                                      std::size_t most = 3);

/** "a", "a or b", "a, b or c". */
std::string orList(std::span<std::string const> texts);

/** "a", "a and b", "a, b and c". */
std::string andList(std::span<std::string const> texts);

/** "; did you mean X?" with the names similar to @p name, or an empty text. */
std::string didYouMean(std::string_view name, std::span<std::string const> candidates);

} // namespace base
