#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velk {

/** The first @p width characters of a UTF-8 text. */
std::string firstCharacters(std::string_view text, std::size_t width);

/** A text of at most @p width characters: one that is longer ends in "...". */
std::string cutAtEnd(std::string_view text, std::size_t width);

/** The same with the end of the text, where the names of variables differ: one that is longer begins "...". */
std::string cutAtStart(std::string_view text, std::size_t width);

} // namespace velk
