#include "tools/velk/commands/write/Change.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace velk {

bool Change::hasIt() const {
    return isReadBack() && tag->text(after.result.value) == tag->text(wanted);
}

bool Change::hadIt() const {
    return before.result.good && tag->text(before.result.value) == tag->text(wanted);
}

Ending Change::ending() const {
    if (accepted()) {
        return !isReadBack()  ? Ending::NotReadBack
               : !hasIt()     ? Ending::Differs
               : written.good ? Ending::Took
                              : Ending::TookUnanswered;
    }
    bool const refused = delivery == Delivery::Refused;
    if (delivery == Delivery::NotSent || (refused && programReplaced)) {
        return Ending::NotWritten;
    }
    if (hasIt() && !(refused && hadIt())) {
        return Ending::TookUnanswered;
    }
    return isReadBack() || refused ? Ending::Failed : Ending::Unknown;
}

bool Change::took() const {
    Ending const end = ending();
    return end == Ending::Took || end == Ending::TookUnanswered;
}

std::optional<bool> Change::isWritten() const {
    if (accepted() || (delivery != Delivery::NotSent && hasIt() && !hadIt())) {
        return true;
    }
    return delivery == Delivery::Unanswered ? std::nullopt : std::optional(false);
}

ExitCode Change::exitCode() const {
    switch (ending()) {
    case Ending::Took:
    case Ending::TookUnanswered:
        return ExitCode::Good;
    case Ending::Differs:
        return ExitCode::ItemNotGood;
    case Ending::NotReadBack:
        return programReplaced ? ExitCode::ItemNotGood : readBackCode;
    case Ending::Unknown:
    case Ending::Failed:
    case Ending::NotWritten:
        break;
    }
    return writeCode;
}

std::string Change::reason(base::Failure const& failure, ExitCode code) const {
    if (programReplaced) {
        return "the PLC's program was replaced";
    }
    return endsEverything(code) ? "" : failure.text; // a fatal failure is printed once, below the table
}

std::string Change::text() const {
    std::string const whyNotWritten = reason(written.failure, writeCode);
    std::string const whyNotReadBack = reason(after.result.failure, readBackCode);
    auto const because = [](std::string const& why) { return why.empty() ? "" : ": " + why; };
    switch (ending()) {
    case Ending::Took:
        return "took";
    case Ending::TookUnanswered:
        return (writeCode == ExitCode::Silent ? "no answer (" : "no good answer (") + written.failure.text +
               "), but the PLC has the value";
    case Ending::Differs:
        return "not kept, or changed by the program since";
    case Ending::NotReadBack:
        return "written, not read back" + because(whyNotReadBack);
    case Ending::Unknown:
        return "not known whether it was written: read it" + (whyNotWritten.empty() ? "" : " (" + whyNotWritten + ")");
    case Ending::Failed:
        return "failed: " + (whyNotWritten.empty() ? "the PLC refused it" : whyNotWritten);
    case Ending::NotWritten:
        break;
    }
    return "not written" + because(whyNotWritten);
}

ExitCode exitCodeOf(std::span<Change const> changes) {
    std::vector<ExitCode> codes;
    std::transform(changes.begin(), changes.end(), std::back_inserter(codes),
                   [](Change const& change) { return change.exitCode(); });
    return exitCodeOfItems(codes);
}

} // namespace velk
