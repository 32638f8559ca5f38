#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velk {

/** What is wrong in a TOML file, each with its place. */
class Complaints {
public:
    explicit Complaints(std::string file) : file_(std::move(file)) {}

    void add(toml::source_position const& place, std::string const& text);

    [[nodiscard]] bool empty() const { return complaints_.empty(); }

    /** A line each, in the order of the file: "velk.toml:12:7: ...". */
    [[nodiscard]] std::vector<std::string> lines() const;

private:
    struct Complaint {
        toml::source_position place;
        std::string text;
    };
    std::string file_;
    std::vector<Complaint> complaints_;
};

/**
 * One table of a TOML file, read key by key. What is wrong becomes a complaint with the place of the value, and the
 * key counts as not given.
 */
class TomlSection {
public:
    /** @p title stands in complaints: "[line]". All but the title must outlive this object. */
    TomlSection(toml::table const& table, std::string title, Complaints& complaints)
        : table_(table), title_(std::move(title)), complaints_(complaints) {}

    [[nodiscard]] bool has(std::string_view key) const { return table_.contains(key); }
    [[nodiscard]] std::optional<int> number(std::string_view key, int low, int high);
    [[nodiscard]] std::optional<std::string> text(std::string_view key);

    /** A text that is one of @p choices, whatever the case; answers it as it is there. */
    [[nodiscard]] std::optional<std::string> choice(std::string_view key, std::span<std::string const> choices);

    /** A text, or a number as text. */
    [[nodiscard]] std::optional<std::string> textOrNumber(std::string_view key);

    /** A list of texts, or one text. */
    [[nodiscard]] std::optional<std::vector<std::string>> texts(std::string_view key);

    /** Calls @p read with the table called @p key when it is there. */
    void section(std::string_view key, std::function<void(TomlSection&)> const& read);

    /** Calls @p read with every table of the list of tables called @p key. */
    void sections(std::string_view key, std::function<void(TomlSection&)> const& read);

    /** Complains about the value of a key, or about the table when the key is not there. */
    void complain(std::string_view key, std::string const& text);

    /** Complains about every key that nobody asked for. */
    void refuseOtherKeys();

private:
    toml::node const* node(std::string_view key);
    void wrongKind(std::string_view key, char const* wanted);

    toml::table const& table_;
    std::string title_;
    Complaints& complaints_;
    std::set<std::string, std::less<>> asked_;
};

} // namespace velk
