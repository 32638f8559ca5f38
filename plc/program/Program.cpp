#include "plc/program/Program.h"

#include "base/Names.h"
#include "plc/frames/Text.h"
#include "plc/program/Layout.h"
#include "plc/program/TypeText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace plc {

namespace {

std::string upperCase(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return upper;
}

/// Assigns a place to every variable of a description.
class Placing {
public:
    Placing(ProgramDescription const& description, TypeTable& types) : description_(description) {
        for (VariableDescription const& variable : description.variables) {
            types_.push_back(types.typeOf(variable.type, variable.line));
            check(variable);
            if (variable.offset && !variable.listedOnly) {
                DataType const& type = types[types_.back()];
                bool const bit = type.kind == TypeKind::kBit;
                areas_[variable.area].reserve(bit ? *variable.offset / 8 : *variable.offset, type.size);
            }
        }
    }

    [[nodiscard]] Place place(std::size_t index, TypeTable const& types) {
        VariableDescription const& variable = description_.variables[index];
        DataType const& type = types[types_[index]];
        bool const bit = type.kind == TypeKind::kBit;
        std::uint64_t offset = variable.offset.value_or(0);
        if (!variable.offset) {
            Layout& area = areas_[variable.area];
            offset = bit ? area.placeBit() : area.place(type.size, type.alignment);
        }
        std::uint64_t const end = bit ? offset / 8 + 1 : offset + type.size;
        if (!variable.listedOnly && end > description_.areaSizes[variable.area]) {
            throw DescriptionError(textOf("variable ", variable.name, " ends at byte ", end, " of area ", variable.area,
                                          ", which has ", description_.areaSizes[variable.area]),
                                   variable.line);
        }
        return {.kind = type.kind,
                .type = types_[index],
                .size = type.size,
                .area = variable.area,
                .offset = static_cast<std::uint32_t>(offset),
                .listedOnly = variable.listedOnly};
    }

private:
    static void check(VariableDescription const& variable) {
        if (variable.name.empty()) {
            throw DescriptionError("a variable has no name", variable.line);
        }
        if (!variable.listedOnly && variable.name.find('[') != std::string::npos) {
            throw DescriptionError(textOf("variable ", variable.name,
                                          ": a name has no '['; an array is one variable "
                                          "of a type such as ARRAY [0..9] OF INT, with a list as its value"),
                                   variable.line);
        }
        if (variable.listedOnly && (!variable.offset || variable.value || !variable.parts.empty())) {
            throw DescriptionError(
                textOf("variable ", variable.name, " is listed only: it needs an offset and has no value"),
                variable.line);
        }
        if (!variable.listedOnly && variable.area >= kAreaCount) {
            throw DescriptionError(textOf("variable ", variable.name, " lies in area ", variable.area,
                                          ", there are areas 0 to ", kAreaCount - 1),
                                   variable.line);
        }
    }

    ProgramDescription const& description_;
    std::vector<std::size_t> types_;
    std::array<Layout, kAreaCount> areas_;
};

/// The next index of `1, 2`, removed from the text.
std::optional<std::int32_t> nextIndex(std::string_view& text) {
    std::size_t const comma = std::min(text.find(','), text.size());
    std::string_view const number = trimmed(text.substr(0, comma));
    text.remove_prefix(std::min(comma + 1, text.size()));
    std::int32_t index = 0;
    auto const [end, error] = std::from_chars(number.data(), number.data() + number.size(), index);
    return error == std::errc{} && end == number.data() + number.size() ? std::optional(index) : std::nullopt;
}

/// The position in memory of the element at these positions, one for each dimension.
std::optional<std::uint64_t> flatPosition(std::vector<Dimension> const& dimensions, std::span<PartStep const> steps) {
    std::uint64_t flat = 0;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        std::size_t const position = std::get<std::size_t>(steps[i]);
        if (i >= dimensions.size() || position >= dimensions[i].count()) {
            return std::nullopt;
        }
        flat = flat * dimensions[i].count() + position;
    }
    return flat;
}

} // namespace

Program::Program(ProgramDescription const& description)
    : projectId_(description.projectId), types_(description.structures) {
    Placing placing(description, types_);
    for (std::size_t i = 0; i < description.variables.size(); ++i) {
        VariableDescription const& variable = description.variables[i];
        addSymbols(variable.name, placing.place(i, types_), variable.flags, variable.line);
    }
}

std::optional<Place> Program::find(std::string_view path) const {
    std::size_t const bracket = std::min(path.find('['), path.size());
    auto const symbol = byName_.find(upperCase(path.substr(0, bracket)));
    if (symbol == byName_.end()) {
        return std::nullopt;
    }
    std::optional<Place> place = symbols_[symbol->second].place;
    std::string_view rest = path.substr(bracket);
    while (place && !rest.empty()) {
        if (rest.starts_with('[')) {
            std::size_t const close = rest.find(']');
            if (close == std::string_view::npos) {
                return std::nullopt;
            }
            place = elementOf(*place, rest.substr(1, close - 1));
            rest.remove_prefix(close + 1);
        } else {
            std::size_t const end = std::min(rest.find_first_of(".[", 1), rest.size());
            place = rest.starts_with('.') ? memberOf(*place, rest.substr(1, end - 1)) : std::nullopt;
            rest.remove_prefix(end);
        }
    }
    return place;
}

std::optional<Place> Program::partOf(Place const& place, std::span<PartStep const> steps) const {
    if (auto const* const name = std::get_if<std::string>(&steps.front())) {
        return memberOf(place, *name);
    }
    DataType const& array = types_[place.type];
    auto const position = steps.size() == 1 ? std::optional<std::uint64_t>(std::get<std::size_t>(steps.front()))
                                            : flatPosition(array.dimensions, steps);
    if (array.kind != TypeKind::kArray || !position || *position >= array.size / types_[array.element].size) {
        return std::nullopt;
    }
    return part(place, array.element, *position * types_[array.element].size);
}

std::string Program::describe(std::uint32_t area, std::uint32_t offset, std::uint32_t size) const {
    bool const bit = size == 0;
    std::uint64_t const end = std::uint64_t{offset} + std::max(size, 1U);
    Symbol const* whole = nullptr;
    for (Symbol const& symbol : symbols_) {
        Place const& place = symbol.place;
        if (place.area != area || place.listedOnly || (place.kind == TypeKind::kBit) != bit) {
            continue;
        }
        if (place.offset == offset && (bit || place.size == size)) {
            return symbol.name;
        }
        if (!bit && place.offset <= offset && end <= std::uint64_t{place.offset} + place.size) {
            whole = &symbol; // the last match is the innermost: members come after their structure
        }
    }
    std::string const figures = bit ? textOf("area ", area, ", bit ", offset)
                                    : textOf("area ", area, ", offset ", offset, ", ", size, " bytes");
    return whole == nullptr ? figures : textOf("part of ", whole->name, " (", figures, ")");
}

void Program::addSymbols(std::string const& name, Place const& place, std::uint16_t flags, int line) {
    if (!byName_.emplace(upperCase(name), symbols_.size()).second) {
        throw DescriptionError(textOf("variable ", name, " occurs twice"), line);
    }
    symbols_.push_back({.name = name, .place = place, .flags = flags});
    for (Member const& member : types_[place.type].members) {
        addSymbols(textOf(name, ".", member.name), part(place, member.type, member.offset), flags, line);
    }
}

/// A part of a variable, `offset` bytes from its start.
Place Program::part(Place const& whole, std::size_t type, std::uint64_t offset) const {
    Place place = whole;
    place.kind = types_[type].kind;
    place.type = type;
    place.size = types_[type].size;
    place.offset = static_cast<std::uint32_t>(whole.offset + offset);
    return place;
}

std::optional<Place> Program::memberOf(Place const& place, std::string_view name) const {
    auto const& members = types_[place.type].members;
    auto const found = std::find_if(members.begin(), members.end(),
                                    [name](Member const& member) { return base::sameName(member.name, name); });
    return found == members.end() ? std::nullopt : std::optional(part(place, found->type, found->offset));
}

std::optional<Place> Program::elementOf(Place const& place, std::string_view indexes) const {
    DataType const& array = types_[place.type];
    std::uint64_t number = 0;
    for (Dimension const& dimension : array.dimensions) {
        auto const index = nextIndex(indexes);
        if (!index || *index < dimension.low || *index > dimension.high) {
            return std::nullopt;
        }
        number = number * dimension.count() + static_cast<std::uint64_t>(std::int64_t{*index} - dimension.low);
    }
    if (array.dimensions.empty() || !trimmed(indexes).empty()) {
        return std::nullopt;
    }
    return part(place, array.element, number * types_[array.element].size);
}

} // namespace plc
