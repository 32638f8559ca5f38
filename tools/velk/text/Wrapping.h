#pragma once

#include <cstddef>
#include <string>

namespace velk {

/** @p text in lines of at most @p width characters, each but the first after @p indent blanks. */
std::string wrapped(std::string const& text, std::size_t indent, std::size_t width);

} // namespace velk
