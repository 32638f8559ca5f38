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
 * One table of a TOML text, read key by key. An error becomes a complaint with the place of the value, and the key
 * counts as missing.
 */
class TomlSection {
public:
    using Read = std::function<void(TomlSection&)>;

    /**
     * @p title names the table in complaints: "[line]". @p table must be a table; both references must outlive this
     * object.
     */
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

    /** A number, with or without a fraction. */
    [[nodiscard]] std::optional<double> real(std::string_view key);

    /** A number from 0 to 1. */
    [[nodiscard]] std::optional<double> fraction(std::string_view key);

    [[nodiscard]] std::optional<bool> truth(std::string_view key) { return valueOf<bool>(key, "true or false"); }
    [[nodiscard]] std::optional<std::string> text(std::string_view key) { return valueOf<std::string>(key, "a text"); }

    /** Empty, with a complaint, when the key is missing. */
    [[nodiscard]] std::string neededText(std::string_view key);

    /** A text that is one of @p choices, ignoring case; returns it as written in @p choices. */
    [[nodiscard]] std::optional<std::string> choice(std::string_view key, std::span<std::string const> choices);

    /**
     * The value that @p lookUp (returning an optional) has for the text; @p names lists the texts that it knows: "Intel
     * or Motorola".
     */
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

    /** A value of any kind; nullptr when the key is missing. */
    [[nodiscard]] TomlNode const* node(std::string_view key);

    /** Complains about the value of a key, or about the table when the key is missing. */
    void complain(std::string_view key, std::string text);

    /** Complains about the table. */
    void complain(std::string text) { complaints_.add(table_.place, std::move(text)); }

    /** Complains about every key that was not read. */
    void refuseOtherKeys();

    /** Treats all keys as read. */
    void acceptOtherKeys();

    [[nodiscard]] TextPlace place() const { return table_.place; }
    [[nodiscard]] Complaints& complaints() const { return complaints_; }

private:
    [[nodiscard]] TomlNode const* find(std::string_view key) const;
    [[nodiscard]] std::optional<std::int64_t> wholeNumber(std::string_view key, std::int64_t low, std::int64_t high);
    void readInner(TomlNode const& table, std::string title, Read const& read);
    void refuseChoice(std::string_view key, std::string_view given, std::string_view names);
    void refuseKind(std::string_view key, std::string_view wanted);

    /** The value when it has the expected type; otherwise complains, calling that type @p wanted. */
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

/** Parses a whole text with @p read; @p title names it in complaints. Throws FileError when there are any. */
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
