#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace plc {

namespace detail {

inline void appendText(std::string& text, std::string_view part) {
    text += part;
}
void appendText(std::string& text, std::integral auto number) {
    text += std::to_string(number);
}

} // namespace detail

/// The parts one after the other, whole numbers in decimal.
template <typename... Parts>
std::string textOf(Parts const&... parts) {
    std::string text;
    (detail::appendText(text, parts), ...);
    return text;
}

} // namespace plc
