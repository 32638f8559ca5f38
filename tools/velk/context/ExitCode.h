#pragma once

#include "base/FailureKind.h"

#include <span>

namespace velk {

/** The exit code of the program. */
enum class ExitCode {
    Good = 0,
    ItemNotGood = 1, ///< the line works, and at least one requested item is not good
    Usage = 2,       ///< the command line, the project file or the configuration is wrong
    Port = 3,        ///< the serial port cannot be opened, or failed
    Silent = 4,      ///< the PLC does not answer
    Refused = 5,     ///< the PLC refuses, or sends a wrong answer
    Interrupted = 130,
};

/** The exit code for a failure. */
ExitCode exitCodeFor(base::FailureKind kind);

/**
 * The more important of two codes, in this order: interruption, port failure, usage, silence, refusal, an item that is
 * not good, all good.
 */
ExitCode worse(ExitCode one, ExitCode other);

/** The code for a list of items: all good, some good (then 1), or none good (then the most important one). */
ExitCode exitCodeOfItems(std::span<ExitCode const> items);

} // namespace velk
