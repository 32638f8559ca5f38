#include "base/TomlNode.h"

#include <toml++/toml.h> // slow to compile, so included only here

namespace base {
namespace {

TextPlace placeOf(toml::source_region const& source) {
    return {.line = static_cast<int>(source.begin.line), .column = static_cast<int>(source.begin.column)};
}

/** The library itself limits lists and tables within each other, but not the dots in a key. */
constexpr int kDeepest = 1000;

struct TooDeep {
    TextPlace place;
};

TomlNode nodeOf(toml::node const& from, int depth);

TomlNode::List listOf(toml::array const& from, int depth) {
    TomlNode::List list;
    list.reserve(from.size());
    for (toml::node const& each : from) {
        list.push_back(nodeOf(each, depth));
    }
    return list;
}

TomlNode::Table tableOf(toml::table const& from, int depth) {
    TomlNode::Table table;
    table.reserve(from.size());
    for (auto const& [key, value] : from) {
        table.push_back({std::string(key.str()), placeOf(key.source()), nodeOf(value, depth)});
    }
    return table;
}

TomlNode nodeOf(toml::node const& from, int depth) {
    if (depth > kDeepest) {
        throw TooDeep{placeOf(from.source())};
    }
    TomlNode node{.value = TomlNode::DateOrTime(), .place = placeOf(from.source())};
    if (auto const* const truth = from.as_boolean()) {
        node.value = truth->get();
    } else if (auto const* const number = from.as_integer()) {
        node.value = number->get();
    } else if (auto const* const real = from.as_floating_point()) {
        node.value = real->get();
    } else if (auto const* const text = from.as_string()) {
        node.value = text->get();
    } else if (auto const* const list = from.as_array()) {
        node.value = listOf(*list, depth + 1);
    } else if (auto const* const table = from.as_table()) {
        node.value = tableOf(*table, depth + 1);
    }
    return node;
}

} // namespace

TomlNode parseToml(std::string_view text, Complaints complaints) {
    try {
        return nodeOf(toml::parse(text), 0);
    } catch (toml::parse_error const& error) {
        complaints.add(placeOf(error.source()), std::string(error.description()));
    } catch (TooDeep const& error) {
        complaints.add(error.place, "this is nested too deeply");
    }
    throw complaints.error();
}

} // namespace base
