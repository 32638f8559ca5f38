#pragma once

#include "base/Complaints.h"
#include "base/TomlNode.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace base {

/**
 * One table of a TOML text, read key by key. What is wrong becomes a complaint with the place of the value, and the
 * key counts as not given.
 */
class TomlSection {
public:
    using Read = std::function<void(TomlSection&)>;

    /** @p title stands in complaints: "[line]". @p table is one, and both references must outlive this object. */
    TomlSection(TomlNode const& table, std::string title, Complaints& complaints)
        : table_(table), title_(std::move(title)), complaints_(complaints) {}

    [[nodiscard]] bool has(std::string_view key) const { return find(key) != nullptr; }

    /** Complains when the key is missing. */
    void need(std::string_view key);

    template <std::integral Number = int>
    [[nodiscard]] std::optional<Number> number(std::string_view key, std::int64_t low, std::int64_t high) {
        std::optional<std::int64_t> const found = wholeNumber(key, low, high);
        return found ? std::optional(static_cast<Number>(*found)) : std::nullopt;
    }

    /** A number with a fraction or without. */
    [[nodiscard]] std::optional<double> real(std::string_view key);

    /** The same from 0 to 1. */
    [[nodiscard]] std::optional<double> fraction(std::string_view key);

    [[nodiscard]] std::optional<bool> truth(std::string_view key) { return valueOf<bool>(key, "true or false"); }
    [[nodiscard]] std::optional<std::string> text(std::string_view key) { return valueOf<std::string>(key, "a text"); }

    /** Empty, with a complaint, when the key is missing. */
    [[nodiscard]] std::string neededText(std::string_view key);

    /** A text that is one of @p choices, whatever the case; answers it as it is there. */
    [[nodiscard]] std::optional<std::string> choice(std::string_view key, std::span<std::string const> choices);

    /** What @p lookUp answers for a text, an optional; @p names are those that it knows: "Intel or Motorola". */
    template <typename Find>
    [[nodiscard]] auto named(std::string_view key, Find lookUp, std::string_view names)
        -> decltype(lookUp(std::string_view())) {
        std::optional<std::string> const given = text(key);
        if (!given) {
            return std::nullopt;
        }
        auto const found = lookUp(std::string_view(*given));
        if (!found) {
            refuseChoice(key, *given, names);
        }
        return found;
    }

    /** A text, or a number as text. */
    [[nodiscard]] std::optional<std::string> textOrNumber(std::string_view key);

    /** A list of texts, or one text. */
    [[nodiscard]] std::optional<std::vector<std::string>> texts(std::string_view key);

    /** Calls @p read with the table called @p key when it is there. */
    void section(std::string_view key, Read const& read);

    /** Calls @p read with every table of the list of tables called @p key. */
    void sections(std::string_view key, Read const& read);

    /** A value of any kind, nullptr when it is not there. */
    [[nodiscard]] TomlNode const* node(std::string_view key);

    /** Complains about the value of a key, or about the table when the key is not there. */
    void complain(std::string_view key, std::string text);

    /** Complains about the table. */
    void complain(std::string text) { complaints_.add(table_.place, std::move(text)); }

    /** Complains about every key that nobody asked for. */
    void refuseOtherKeys();

    /** As if all keys had been asked for. */
    void acceptOtherKeys();

    [[nodiscard]] TextPlace place() const { return table_.place; }
    [[nodiscard]] Complaints& complaints() const { return complaints_; }

private:
    [[nodiscard]] TomlNode const* find(std::string_view key) const;
    [[nodiscard]] std::optional<std::int64_t> wholeNumber(std::string_view key, std::int64_t low, std::int64_t high);
    void readInner(TomlNode const& table, std::string title, Read const& read);
    void refuseChoice(std::string_view key, std::string_view given, std::string_view names);
    void refuseKind(std::string_view key, std::string_view wanted);

    /** The value when it is of the kind that is called @p wanted; complains about one of another kind. */
    template <typename Kind>
    [[nodiscard]] std::optional<Kind> valueOf(std::string_view key, std::string_view wanted) {
        TomlNode const* const found = node(key);
        Kind const* const value = found != nullptr ? found->as<Kind>() : nullptr;
        if (found != nullptr && value == nullptr) {
            refuseKind(key, wanted);
        }
        return value != nullptr ? std::optional(*value) : std::nullopt;
    }

    TomlNode const& table_;
    std::string title_;
    Complaints& complaints_;
    std::set<std::string, std::less<>> asked_;
};

/** What @p read makes of a whole text; @p title is what complaints call it. Throws FileError when there are any. */
template <typename ReadTop>
auto readToml(std::string_view text, Complaints complaints, std::string title, ReadTop read) {
    TomlNode const whole = parseToml(text, complaints);
    TomlSection top(whole, std::move(title), complaints);
    auto result = read(top);
    top.refuseOtherKeys();
    if (!complaints.empty()) {
        throw complaints.error();
    }
    return result;
}

} // namespace base
