#pragma once

#include "base/Result.h"

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

/** What is known of the port when something failed. */
enum class PortState {
    Fine,
    Dead,        ///< could not be opened, or died while it was open
    Interrupted, ///< the user ended its waiting
};

/** The answer for a failure of the driver or of the host. */
ExitCode exitCodeFor(base::Failure const& failure, PortState port);

/**
 * The more telling of two answers: interruption, port trouble, usage, silence, refusal, an item that is not good, all
 * good, in this order.
 */
ExitCode worse(ExitCode one, ExitCode other);

/** The answer for a list of items: all good, some good (then 1), or none good (then the most telling of them). */
ExitCode exitCodeOfItems(std::span<ExitCode const> items);

} // namespace velk
