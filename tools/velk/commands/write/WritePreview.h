#pragma once

#include "tools/velk/commands/write/Change.h"
#include "tools/velk/commands/write/StationNaming.h"

#include <span>
#include <string>
#include <vector>

namespace velk {

class Session;
class Terminal;

/** The end of every message before the writing. */
inline constexpr char const* kNothingWritten = "nothing was written";

/**
 * Reports the variables that cannot be written, and throws CommandError if there are any: then nothing is written. A
 * present value that the driver cannot convert does not prevent writing, for the new value replaces it.
 *
 * Bad quality does: the PLC itself marks the value as invalid. The new value could not be read back either, and a PLC
 * that refuses one item refuses the whole list.
 */
void requireWritable(std::span<Reading const> before, StationNaming const& naming, Session const& session,
                     Terminal& terminal);

/** The changes for the texts of the values. Reports those that do not fit, and throws CommandError. */
std::vector<Change> parseChanges(std::span<Reading const> before, std::span<std::string const> values,
                                 StationNaming const& naming, Terminal& terminal);

/** Reports what the table does not show: values without a text, and BOOLs that may be single bits. */
void tellOfPitfalls(std::span<Change const> changes, StationNaming const& naming, bool asking, Terminal& terminal);

/** The present values and those to write, as a table. */
std::string previewText(std::span<Change const> changes, StationNaming const& naming);

/** "Write this value to the PLC? [y/N] ". */
std::string questionText(std::span<Tag const> tags, StationNaming const& naming);

} // namespace velk
