#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plc {

/// The bounds of one dimension of an array, both included.
struct Dimension {
    std::int32_t low = 0;
    std::int32_t high = 0;
    [[nodiscard]] std::uint64_t count() const {
        return static_cast<std::uint64_t>(std::int64_t{high} - std::int64_t{low} + 1);
    }
};

/// The parts of an array type's text, `ARRAY [low..high, ...] OF element`.
struct ArrayText {
    std::vector<Dimension> dimensions{};
    std::string_view element;
};

/// The text without blanks and tabs at its ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// Whether the text begins with the word ARRAY.
[[nodiscard]] bool isArrayText(std::string_view text);

/// Splits the text; nothing when it is not written as an array type.
[[nodiscard]] std::optional<ArrayText> parseArrayText(std::string_view text);

/// n of STRING(n), 80 for STRING alone; nothing for any other text. n is 1..32,767.
[[nodiscard]] std::optional<std::uint32_t> parseStringText(std::string_view text);

/// `ARRAY [0..9, 1..2] OF element`.
[[nodiscard]] std::string arrayText(std::vector<Dimension> const& dimensions, std::string_view element);

} // namespace plc
