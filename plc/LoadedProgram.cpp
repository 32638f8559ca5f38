#include "plc/LoadedProgram.h"

#include "plc/SymbolFileWriter.h"
#include "plc/Text.h"
#include "plc/ValueCodec.h"

#include <stdexcept>
#include <utility>

namespace plc {

namespace {

void setInitialValues(LoadedProgram& loaded, ProgramDescription const& description, ByteOrder order) {
    for (VariableDescription const& variable : description.variables) {
        if (!variable.value || variable.listedOnly) {
            continue;
        }
        try {
            writeValue(loaded.memory, loaded.program.find(variable.name).value(), *variable.value, order);
        } catch (std::invalid_argument const& fault) {
            throw DescriptionError(textOf("variable ", variable.name, ": ", fault.what()), variable.line);
        }
    }
}

} // namespace

LoadedProgram loadProgram(ProgramDescription const& description, ByteOrder order) {
    Program program(description);
    Bytes symbolFile = writeSymbolFile(program, description.symbolFile);
    LoadedProgram loaded{
        .program = std::move(program), .memory = Memory(description.areaSizes), .symbolFile = std::move(symbolFile)};
    setInitialValues(loaded, description, order);
    return loaded;
}

} // namespace plc
