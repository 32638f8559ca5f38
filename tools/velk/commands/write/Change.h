#pragma once

#include "host/values/TagReader.h"
#include "tools/velk/commands/write/WriteWatch.h"
#include "tools/velk/context/ExitCode.h"
#include "tools/velk/line/Readings.h"
#include "tools/velk/line/Tag.h"

#include <optional>
#include <span>
#include <string>

namespace velk {

/** How the writing of a value ended. */
enum class Ending {
    Took,
    TookUnanswered, ///< the answer was lost, and the PLC has the value
    Differs,        ///< the PLC accepted it, and has another value now
    NotReadBack,    ///< the PLC accepted it
    Unknown,        ///< the PLC may have accepted it
    Failed,         ///< the PLC refused it, or has another value
    NotWritten,     ///< the PLC was not even asked, or has another program and refused
};

/** One value on its way to the PLC. */
struct Change {
    Tag const* tag = nullptr;
    host::ValueBytes wanted;
    Reading before; ///< not good when the present value does not fit the type

    host::TagResult written{};             ///< as the driver reports it
    Delivery delivery = Delivery::NotSent; ///< as it was seen on the line
    ExitCode writeCode = ExitCode::Good;   ///< what `written` means
    Reading after{};
    ExitCode readBackCode = ExitCode::Good; ///< what `after` means
    std::string advice{};                   ///< for the first failure, with its likely cause
    bool programReplaced = false;           ///< then `after`, read with a tag of the old program, means nothing

    [[nodiscard]] Ending ending() const;

    /** The PLC has the value, and did not refuse it. */
    [[nodiscard]] bool took() const;

    /** Whether the value was written; nothing when unknown. */
    [[nodiscard]] std::optional<bool> isWritten() const;

    /** The exit code for the ending. */
    [[nodiscard]] ExitCode exitCode() const;

    /** The ending in words. */
    [[nodiscard]] std::string text() const;

    /** Whether `after` is the variable's value. */
    [[nodiscard]] bool isReadBack() const { return after.result.good && !programReplaced; }

private:
    [[nodiscard]] bool accepted() const { return written.good || delivery == Delivery::Accepted; }
    [[nodiscard]] bool hasIt() const;
    [[nodiscard]] bool hadIt() const;
    [[nodiscard]] std::string reason(base::Failure const& failure, ExitCode code) const;
};

/** The exit code for all of them. */
ExitCode exitCodeOf(std::span<Change const> changes);

} // namespace velk
