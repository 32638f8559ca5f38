#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace base {

/** @p text in upper case; PLC names do not tell the two cases of a letter apart. */
std::string upperCase(std::string_view text);

/** Whether both are the same but for the case of their letters. */
bool sameName(std::string_view one, std::string_view other);

/** Those of @p candidates that somebody may have meant who wrote @p name, the likeliest first; at most @p most. */
std::vector<std::string> similarNames(std::string_view name, std::span<std::string const> candidates,
                                      std::size_t most = 3);

/** "a", "a or b", "a, b or c". */
std::string orList(std::span<std::string const> texts);

/** "a", "a and b", "a, b and c". */
std::string andList(std::span<std::string const> texts);

/** "; did you mean X?" with the names much like @p name, or nothing. */
std::string didYouMean(std::string_view name, std::span<std::string const> candidates);

} // namespace base
