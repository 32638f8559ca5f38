#include "base/TomlNode.h"

#include <toml++/toml.h> // takes long to compile: only here

namespace base {
namespace {

TextPlace placeOf(toml::source_region const& source) {
    return {.line = static_cast<int>(source.begin.line), .column = static_cast<int>(source.begin.column)};
}

TomlNode nodeOf(toml::node const& from);

TomlNode::List listOf(toml::array const& from) {
    TomlNode::List list;
    for (toml::node const& each : from) {
        list.push_back(nodeOf(each));
    }
    return list;
}

TomlNode::Table tableOf(toml::table const& from) {
    TomlNode::Table table;
    for (auto const& [key, value] : from) {
        table.push_back({std::string(key.str()), placeOf(key.source()), nodeOf(value)});
    }
    return table;
}

TomlNode nodeOf(toml::node const& from) {
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
        node.value = listOf(*list);
    } else if (auto const* const table = from.as_table()) {
        node.value = tableOf(*table);
    }
    return node;
}

} // namespace

TomlNode parseToml(std::string_view text, Complaints complaints) {
    try {
        return nodeOf(toml::parse(text));
    } catch (toml::parse_error const& error) {
        complaints.add(placeOf(error.source()), std::string(error.description()));
        throw complaints.error();
    }
}

} // namespace base
