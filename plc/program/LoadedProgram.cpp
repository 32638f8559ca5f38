#include "plc/program/LoadedProgram.h"

#include "plc/frames/Text.h"
#include "plc/program/SymbolFileWriter.h"
#include "plc/program/ValueCodec.h"

#include <stdexcept>
#include <utility>

namespace plc {

namespace {

/// The part of a variable named in a description.
Place partOf(Program const& program, VariableDescription const& variable, std::vector<PartStep> const& way) {
    Place place = program.find(variable.name).value();
    for (PartStep const& step : way) {
        auto const part = program.partOf(place, step);
        if (!part) {
            auto const* const name = std::get_if<std::string>(&step);
            std::string const what = name != nullptr ? textOf("member ", *name)
                                                     : textOf("element at position ", std::get<std::size_t>(step));
            throw std::invalid_argument(textOf("there is no ", what));
        }
        place = *part;
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
