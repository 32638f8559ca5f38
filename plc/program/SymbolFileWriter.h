#pragma once

#include "plc/frames/Bytes.h"
#include "plc/program/Program.h"
#include "plc/program/ProgramDescription.h"

namespace plc {

/**
 * The symbol file DOWNLOAD.SDB of a program.
 *
 * Everything is little-endian without padding: the 16-byte file header (format 1, header length, variant, project
 * identifier), the data-type section (kind 2) and the variable section (kind 3), each with a 16-byte header (kind,
 * length from there on, 0, number of records).
 */
[[nodiscard]] Bytes writeSymbolFile(Program const& program, SymbolFileForm const& form);

} // namespace plc
