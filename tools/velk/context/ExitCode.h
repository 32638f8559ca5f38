#pragma once

#include "base/FailureKind.h"

#include <span>

namespace velk {

/** What the program answers to the one who called it. */
enum class ExitCode {
    Good = 0,
    ItemNotGood = 1, ///< the line works, and at least one thing that was asked for is not good
    Usage = 2,       ///< the command line, the project file or the configuration is wrong
    Port = 3,        ///< the serial port cannot be had, or died
    Silent = 4,      ///< the PLC does not answer
    Refused = 5,     ///< the PLC refuses, or answers wrongly
    Interrupted = 130,
};

/** The answer for a failure. */
ExitCode exitCodeFor(base::FailureKind kind);

/**
 * The more telling of two answers: interruption, port trouble, usage, silence, refusal, an item that is not good, all
 * good, in this order.
 */
ExitCode worse(ExitCode one, ExitCode other);

/** The answer for a list of items: all good, some good (then 1), or none good (then the most telling of them). */
ExitCode exitCodeOfItems(std::span<ExitCode const> items);

} // namespace velk
