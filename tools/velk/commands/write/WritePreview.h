#pragma once

#include "tools/velk/commands/write/Change.h"
#include "tools/velk/commands/write/StationNaming.h"

#include <span>
#include <string>
#include <vector>

namespace velk {

class Session;
class Terminal;

/** What every complaint before the writing ends with. */
inline constexpr char const* kNothingWritten = "nothing was written";

/**
 * Complains about the variables that cannot be written, and throws CommandError: nothing is written when anything
 * cannot be. A present value that the driver cannot convert is no reason, for the value to write replaces it.
 *
 * One of bad quality is a reason. The PLC itself says that it does not stand for what lies there; what is written
 * could not be read back either, and a PLC that refuses one item refuses the whole list.
 */
void requireWritable(std::span<Reading const> before, StationNaming const& naming, Session const& session,
                     Terminal& terminal);

/** The changes for the texts of the values. Complains about those that do not fit, and throws CommandError. */
std::vector<Change> parseChanges(std::span<Reading const> before, std::span<std::string const> values,
                                 StationNaming const& naming, Terminal& terminal);

/** Tells what the table does not: of present values without a text, and of BOOLs that may be single bits. */
void tellOfPitfalls(std::span<Change const> changes, StationNaming const& naming, bool asking, Terminal& terminal);

/** The present values and those to write, as a table. */
std::string previewText(std::span<Change const> changes, StationNaming const& naming);

/** "Write this value to the PLC? [y/N] ". */
std::string questionText(std::span<Tag const> tags, StationNaming const& naming);

} // namespace velk
