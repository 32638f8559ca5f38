#pragma once

#include "tools/velk/commands/check/CheckReport.h"
#include "tools/velk/commands/check/LineProgress.h"
#include "tools/velk/context/ExitCode.h"
#include "tools/velk/line/Session.h"

#include <functional>

namespace velk {

/** One check of a line, from the port to a value; it ends at the first step that fails. */
class Walk {
public:
    /** Called for each step, in order, as soon as its result is known. */
    using Tell = std::function<void(StepReport const&)>;

    Walk(Settings settings, Context& context, UploadStyle uploads, Tell tell);

    /** Throws CommandError for failures outside the line. */
    ExitCode run();

    [[nodiscard]] CheckReport const& report() const { return report_; }

private:
    ExitCode findProgram();
    ExitCode readOne(SymbolTable const& table);
    ExitCode fail(CheckStep step, base::Failure const& failure);
    ExitCode failOnLine(base::Failure const& failure);
    void tell(StepReport step);
    void tellOk(CheckStep step, std::string found);
    void tellReached();
    void tellUntil(CheckStep step);
    [[nodiscard]] bool isNext(CheckStep step) const;
    [[nodiscard]] std::chrono::system_clock::time_point timeOf(ReachedStep const* reached) const;

    Context& context_;
    Settings settings_;
    Tell tell_;
    CheckReport report_;
    Session session_;
    LineProgress progress_;
    Attachment attachment_;
};

} // namespace velk
