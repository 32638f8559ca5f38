#include "plc/program/TypeText.h"

#include "base/Names.h"
#include "plc/frames/Text.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace plc {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::uint32_t kUsualStringLength = 80;
constexpr std::uint32_t kLongestString = 32'767;

/// The text after the word, when the text begins with it.
std::optional<std::string_view> behindWord(std::string_view text, std::string_view word) {
    if (text.size() < word.size() || !base::sameName(text.substr(0, word.size()), word)) {
        return std::nullopt;
    }
    return text.substr(word.size());
}

template <typename T>
std::optional<T> wholeNumber(std::string_view text) {
    T number{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::optional<Dimension> dimension(std::string_view text) {
    std::size_t const dots = text.find("..");
    if (dots == std::string_view::npos) {
        return std::nullopt;
    }
    auto const low = wholeNumber<std::int32_t>(trimmed(text.substr(0, dots)));
    auto const high = wholeNumber<std::int32_t>(trimmed(text.substr(dots + 2)));
    if (!low || !high || *low > *high) {
        return std::nullopt;
    }
    return Dimension{.low = *low, .high = *high};
}

std::optional<std::vector<Dimension>> dimensions(std::string_view text) {
    std::vector<Dimension> all;
    for (;;) {
        std::size_t const comma = std::min(text.find(','), text.size());
        auto const one = dimension(text.substr(0, comma));
        if (!one) {
            return std::nullopt;
        }
        all.push_back(*one);
        if (comma == text.size()) {
            return all;
        }
        text.remove_prefix(comma + 1);
    }
}

} // namespace

std::string_view trimmed(std::string_view text) {
    std::size_t const first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool isArrayText(std::string_view text) {
    auto const behind = behindWord(text, "ARRAY");
    return behind && (behind->starts_with('[') || behind->starts_with(' ') || behind->starts_with('\t'));
}

std::optional<ArrayText> parseArrayText(std::string_view text) {
    auto const behind = behindWord(text, "ARRAY");
    if (!behind) {
        return std::nullopt;
    }
    std::string_view const rest = trimmed(*behind);
    std::size_t const close = rest.find(']');
    if (!rest.starts_with('[') || close == std::string_view::npos) {
        return std::nullopt;
    }
    auto bounds = dimensions(rest.substr(1, close - 1));
    auto const element = behindWord(trimmed(rest.substr(close + 1)), "OF");
    if (!bounds || !element || !(element->starts_with(' ') || element->starts_with('\t'))) {
        return std::nullopt;
    }
    return ArrayText{.dimensions = std::move(*bounds), .element = trimmed(*element)};
}

std::optional<std::uint32_t> parseStringText(std::string_view text) {
    auto const behind = behindWord(text, "STRING");
    if (!behind) {
        return std::nullopt;
    }
    std::string_view const length = trimmed(*behind);
    if (length.empty()) {
        return kUsualStringLength;
    }
    if (length.size() < 3 || !length.starts_with('(') || !length.ends_with(')')) {
        return std::nullopt;
    }
    auto const number = wholeNumber<std::uint32_t>(trimmed(length.substr(1, length.size() - 2)));
    return number && *number >= 1 && *number <= kLongestString ? number : std::nullopt;
}

std::string arrayText(std::vector<Dimension> const& dimensions, std::string_view element) {
    std::string text = "ARRAY [";
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
        text += textOf(i == 0 ? "" : ", ", dimensions[i].low, "..", dimensions[i].high);
    }
    return text + textOf("] OF ", element);
}

} // namespace plc
