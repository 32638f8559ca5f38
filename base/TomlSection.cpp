#include "base/TomlSection.h"

#include "base/Names.h"

#include <algorithm>
#include <array>

namespace base {
namespace {

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

char const* kindOf(TomlNode const& node) {
    constexpr std::array kKinds{"a date or a time", "true or false", "a whole number", "a number with a fraction",
                                "a text",           "a list",        "a table"};
    return kKinds.at(node.value.index());
}

template <typename Kind>
Kind const* as(TomlNode const* node) {
    return node != nullptr ? node->as<Kind>() : nullptr;
}

template <typename Kind>
bool holdsOnly(TomlNode::List const& list) {
    return std::all_of(list.begin(), list.end(), [](TomlNode const& each) { return each.as<Kind>() != nullptr; });
}

} // namespace

TomlNode const* TomlSection::find(std::string_view key) const {
    TomlNode::Table const& table = *table_.as<TomlNode::Table>();
    auto const found = std::find_if(table.begin(), table.end(), [&](TomlEntry const& each) { return each.key == key; });
    return found == table.end() ? nullptr : &found->value;
}

TomlNode const* TomlSection::node(std::string_view key) {
    asked_.emplace(key);
    return find(key);
}

void TomlSection::complain(std::string_view key, std::string text) {
    TomlNode const* const value = find(key);
    complaints_.add(value != nullptr ? value->place : table_.place, std::move(text));
}

void TomlSection::refuseKind(std::string_view key, std::string_view wanted) {
    complain(key, quoted(key) + " must be " + std::string(wanted) + ", not " + kindOf(*find(key)));
}

void TomlSection::refuseChoice(std::string_view key, std::string_view given, std::string_view names) {
    complain(key, quoted(key) + " is " + quoted(given) + "; it must be " + std::string(names));
}

void TomlSection::need(std::string_view key) {
    if (!has(key)) {
        complain(quoted(key) + " is missing");
    }
}

std::optional<std::int64_t> TomlSection::wholeNumber(std::string_view key, std::int64_t low, std::int64_t high) {
    auto const number = valueOf<std::int64_t>(key, "a whole number");
    if (number && (*number < low || *number > high)) {
        complain(key, quoted(key) + " is " + std::to_string(*number) + "; it must be " + std::to_string(low) + " to " +
                          std::to_string(high));
        return std::nullopt;
    }
    return number;
}

std::optional<double> TomlSection::real(std::string_view key) {
    if (auto const* const whole = as<std::int64_t>(node(key))) {
        return static_cast<double>(*whole);
    }
    return valueOf<double>(key, "a number");
}

std::optional<double> TomlSection::fraction(std::string_view key) {
    std::optional<double> const number = real(key);
    if (number && !(*number >= 0 && *number <= 1)) {
        complain(key, quoted(key) + " must be a number from 0 to 1");
        return std::nullopt;
    }
    return number;
}

std::string TomlSection::neededText(std::string_view key) {
    need(key);
    return text(key).value_or("");
}

std::optional<std::string> TomlSection::choice(std::string_view key, std::span<std::string const> choices) {
    auto const known = [&](std::string_view given) {
        auto const found = std::find_if(choices.begin(), choices.end(),
                                        [&](std::string const& each) { return sameName(each, given); });
        return found == choices.end() ? std::nullopt : std::optional(*found);
    };
    return named(key, known, orList(choices));
}

std::optional<std::string> TomlSection::textOrNumber(std::string_view key) {
    if (auto const* const number = as<std::int64_t>(node(key))) {
        return std::to_string(*number);
    }
    return valueOf<std::string>(key, "a text or a whole number");
}

std::optional<std::vector<std::string>> TomlSection::texts(std::string_view key) {
    if (auto const* const text = as<std::string>(node(key))) {
        return std::vector{*text};
    }
    auto const list = valueOf<TomlNode::List>(key, "a list of texts");
    if (!list || !holdsOnly<std::string>(*list)) {
        if (list) {
            refuseKind(key, "a list of texts");
        }
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (TomlNode const& each : *list) {
        texts.push_back(*each.as<std::string>());
    }
    return texts;
}

void TomlSection::readInner(TomlNode const& table, std::string title, Read const& read) {
    TomlSection inner(table, std::move(title), complaints_);
    read(inner);
    inner.refuseOtherKeys();
}

void TomlSection::section(std::string_view key, Read const& read) {
    TomlNode const* const value = node(key);
    if (as<TomlNode::Table>(value) != nullptr) {
        readInner(*value, "[" + std::string(key) + "]", read);
    } else if (value != nullptr) {
        refuseKind(key, "a table");
    }
}

void TomlSection::sections(std::string_view key, Read const& read) {
    TomlNode const* const value = node(key);
    if (value == nullptr) {
        return;
    }
    std::string const title = "[[" + std::string(key) + "]]";
    auto const* const list = value->as<TomlNode::List>();
    if (list == nullptr || !holdsOnly<TomlNode::Table>(*list)) {
        complain(key, "every " + quoted(key) + " must be a table of its own: " + title);
        return;
    }
    for (TomlNode const& each : *list) {
        readInner(each, title, read);
    }
}

void TomlSection::acceptOtherKeys() {
    for (TomlEntry const& each : *table_.as<TomlNode::Table>()) {
        asked_.insert(each.key);
    }
}

void TomlSection::refuseOtherKeys() {
    std::vector<std::string> const known(asked_.begin(), asked_.end());
    for (TomlEntry const& each : *table_.as<TomlNode::Table>()) {
        if (!asked_.contains(each.key)) {
            complaints_.add(each.place,
                            "there is no " + quoted(each.key) + " in " + title_ + didYouMean(each.key, known));
        }
    }
}

} // namespace base
