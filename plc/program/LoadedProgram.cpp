#include "plc/program/LoadedProgram.h"

#include "plc/frames/Text.h"
#include "plc/program/SymbolFileWriter.h"
#include "plc/program/ValueCodec.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <utility>

namespace plc {

namespace {

/// How many steps lead to the next part: one, or one for each dimension of an array whose list is nested.
std::size_t stepsToPart(Program const& program, Place const& place, std::span<PartStep const> way) {
    DataType const& type = program.types()[place.type];
    if (type.kind != TypeKind::kArray) {
        return 1;
    }
    auto const isName = [](PartStep const& step) { return std::holds_alternative<std::string>(step); };
    auto const lists = static_cast<std::size_t>(std::find_if(way.begin(), way.end(), isName) - way.begin());
    std::size_t const ofElement = program.types()[type.element].kind == TypeKind::kArray ? 1 : 0;
    return lists >= type.dimensions.size() + ofElement ? type.dimensions.size() : 1;
}

[[noreturn]] void refusePart(DataType const& whole, std::span<PartStep const> steps) {
    if (auto const* const name = std::get_if<std::string>(&steps.front())) {
        throw std::invalid_argument(textOf("there is no member ", *name));
    }
    if (whole.kind != TypeKind::kArray) {
        throw std::invalid_argument(textOf("a list stands where one ", whole.name, " is expected"));
    }
    std::string positions;
    for (PartStep const& step : steps) {
        positions += textOf(positions.empty() ? "" : ", ", std::get<std::size_t>(step));
    }
    throw std::invalid_argument(textOf("there is no element at position ", positions));
}

/// The part of a variable named in a description.
Place partOf(Program const& program, VariableDescription const& variable, std::span<PartStep const> way) {
    Place place = program.find(variable.name).value();
    while (!way.empty()) {
        std::span<PartStep const> const steps = way.first(stepsToPart(program, place, way));
        auto const part = program.partOf(place, steps);
        if (!part) {
            refusePart(program.types()[place.type], steps);
        }
        place = *part;
        way = way.subspan(steps.size());
    }
    return place;
}

void setInitialValues(LoadedProgram& loaded, ProgramDescription const& description, ByteOrder order) {
    for (VariableDescription const& variable : description.variables) {
        if (variable.listedOnly) {
            continue;
        }
        try {
            if (variable.value) {
                writeValue(loaded.memory, loaded.program.find(variable.name).value(), *variable.value, order);
            }
            for (PartValue const& part : variable.parts) {
                writeValue(loaded.memory, partOf(loaded.program, variable, part.way), part.value, order);
            }
        } catch (std::invalid_argument const& fault) {
            throw DescriptionError(textOf("variable ", variable.name, ": ", fault.what()), variable.line);
        }
    }
}

} // namespace

LoadedProgram loadProgram(ProgramDescription const& description, ByteOrder order) {
    Program program(description);
    Bytes symbolFile = writeSymbolFile(program, description.symbolFile);
    VariableBehaviours behaviours(description.behaviours, program, order);
    LoadedProgram loaded{.program = std::move(program),
                         .memory = Memory(description.areaSizes),
                         .symbolFile = std::move(symbolFile),
                         .behaviours = std::move(behaviours)};
    setInitialValues(loaded, description, order);
    return loaded;
}

} // namespace plc
