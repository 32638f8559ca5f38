#include "tools/velk/project/TomlSection.h"

#include "tools/velk/text/Names.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

namespace velk {
namespace {

char const* kindOf(toml::node const& node) {
    switch (node.type()) {
    case toml::node_type::string:
        return "a text";
    case toml::node_type::integer:
        return "a whole number";
    case toml::node_type::floating_point:
        return "a number with a fraction";
    case toml::node_type::boolean:
        return "true or false";
    case toml::node_type::array:
        return "a list";
    case toml::node_type::table:
        return "a table";
    default:
        return "a date or a time";
    }
}

} // namespace

void Complaints::add(toml::source_position const& place, std::string const& text) {
    complaints_.push_back({place, text});
}

std::vector<std::string> Complaints::lines() const {
    std::vector<Complaint> sorted = complaints_;
    std::stable_sort(sorted.begin(), sorted.end(), [](Complaint const& one, Complaint const& other) {
        return std::tie(one.place.line, one.place.column) < std::tie(other.place.line, other.place.column);
    });
    std::vector<std::string> lines;
    for (Complaint const& each : sorted) {
        lines.push_back(fmt::format("{}:{}:{}: {}", file_, each.place.line, each.place.column, each.text));
    }
    return lines;
}

toml::node const* TomlSection::node(std::string_view key) {
    asked_.emplace(key);
    return table_.get(key);
}

void TomlSection::complain(std::string_view key, std::string const& text) {
    toml::node const* const value = table_.get(key);
    complaints_.add(value != nullptr ? value->source().begin : table_.source().begin, text);
}

void TomlSection::wrongKind(std::string_view key, char const* wanted) {
    complain(key, fmt::format("'{}' has to be {}, not {}", key, wanted, kindOf(*table_.get(key))));
}

std::optional<int> TomlSection::number(std::string_view key, int low, int high) {
    toml::node const* const value = node(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_integer()) {
        wrongKind(key, "a whole number");
        return std::nullopt;
    }
    std::int64_t const number = value->as_integer()->get();
    if (number < low || number > high) {
        complain(key, fmt::format("'{}' is {}; it has to be {} to {}", key, number, low, high));
        return std::nullopt;
    }
    return static_cast<int>(number);
}

std::optional<std::string> TomlSection::text(std::string_view key) {
    toml::node const* const value = node(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_string()) {
        wrongKind(key, "a text");
        return std::nullopt;
    }
    return value->as_string()->get();
}

std::optional<std::string> TomlSection::choice(std::string_view key, std::span<std::string const> choices) {
    std::optional<std::string> const given = text(key);
    if (!given) {
        return std::nullopt;
    }
    auto const found =
        std::find_if(choices.begin(), choices.end(), [&](std::string const& each) { return sameName(each, *given); });
    if (found == choices.end()) {
        complain(key, fmt::format("'{}' is '{}'; it has to be {}", key, *given, orList(choices)));
        return std::nullopt;
    }
    return *found;
}

std::optional<std::string> TomlSection::textOrNumber(std::string_view key) {
    toml::node const* const value = node(key);
    if (value != nullptr && value->is_integer()) {
        return std::to_string(value->as_integer()->get());
    }
    if (value != nullptr && !value->is_string()) {
        wrongKind(key, "a text or a whole number");
        return std::nullopt;
    }
    return text(key);
}

std::optional<std::vector<std::string>> TomlSection::texts(std::string_view key) {
    toml::node const* const value = node(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (value->is_string()) {
        return std::vector<std::string>{value->as_string()->get()};
    }
    toml::array const* const list = value->as_array();
    if (list == nullptr ||
        !std::all_of(list->begin(), list->end(), [](auto const& each) { return each.is_string(); })) {
        wrongKind(key, "a list of texts");
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (toml::node const& each : *list) {
        texts.push_back(each.as_string()->get());
    }
    return texts;
}

void TomlSection::section(std::string_view key, std::function<void(TomlSection&)> const& read) {
    toml::node const* const value = node(key);
    if (value == nullptr) {
        return;
    }
    if (!value->is_table()) {
        wrongKind(key, "a table");
        return;
    }
    TomlSection inner(*value->as_table(), fmt::format("[{}]", key), complaints_);
    read(inner);
    inner.refuseOtherKeys();
}

void TomlSection::sections(std::string_view key, std::function<void(TomlSection&)> const& read) {
    toml::node const* const value = node(key);
    if (value == nullptr) {
        return;
    }
    toml::array const* const list = value->as_array();
    if (list == nullptr || !std::all_of(list->begin(), list->end(), [](auto const& each) { return each.is_table(); })) {
        complain(key, fmt::format("every '{0}' has to be a table of its own: [[{0}]]", key));
        return;
    }
    for (toml::node const& each : *list) {
        TomlSection inner(*each.as_table(), fmt::format("[[{}]]", key), complaints_);
        read(inner);
        inner.refuseOtherKeys();
    }
}

void TomlSection::refuseOtherKeys() {
    std::vector<std::string> const known(asked_.begin(), asked_.end());
    for (auto const& [key, value] : table_) {
        if (!asked_.contains(key.str())) {
            complaints_.add(key.source().begin,
                            fmt::format("there is no '{}' in {}{}", key.str(), title_, didYouMean(key.str(), known)));
        }
    }
}

} // namespace velk
