#include "plc/station/ItemNames.h"

#include "plc/frames/Text.h"
#include "plc/program/ValueCodec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

namespace plc {

namespace {

constexpr std::size_t kMostNames = 6;

std::string numberText(double number) {
    std::array<char, 32> text{};
    auto const [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} ? std::string(text.data(), end) : "?";
}

std::string valueText(Value const& value) {
    return std::visit(
        [](auto const& content) -> std::string {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, bool>) {
                return content ? "TRUE" : "FALSE";
            } else if constexpr (std::is_same_v<Content, double>) {
                return numberText(content);
            } else if constexpr (std::is_same_v<Content, std::string>) {
                return textOf("'", content, "'");
            } else {
                return std::to_string(content);
            }
        },
        value.content());
}

/// " = 5"; nothing for items without a single value.
std::string assigned(std::string const& name, LoadedProgram const& loaded, ByteOrder order) {
    auto const place = loaded.program.find(name);
    if (!place) {
        return "";
    }
    try {
        return textOf(" = ", valueText(readValue(loaded.memory, *place, order)));
    } catch (std::invalid_argument const&) {
        return "";
    }
}

template <typename Describe>
std::string listed(std::span<ListItem const> items, Describe&& describe) {
    std::string text;
    for (ListItem const& item : items.first(std::min(items.size(), kMostNames))) {
        text += text.empty() ? "" : ", ";
        text += describe(item);
    }
    return items.size() > kMostNames ? textOf(text, " and ", items.size() - kMostNames, " more") : text;
}

} // namespace

std::string namesOf(std::span<ListItem const> items, Program const& program) {
    return listed(items, [&](ListItem const& item) { return program.describe(item.area, item.offset, item.size); });
}

std::string valuesOf(std::span<ListItem const> items, LoadedProgram const& program, ByteOrder order) {
    return listed(items, [&](ListItem const& item) {
        std::string const name = program.program.describe(item.area, item.offset, item.size);
        return name + assigned(name, program, order);
    });
}

} // namespace plc
