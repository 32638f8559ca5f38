#pragma once

#include "base/Result.h"
#include "tools/velk/commands/write/Change.h"
#include "tools/velk/commands/write/WriteWatch.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/line/Session.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velk {

/** Writes values, reads them back, and records the result of each in any case. */
class Writing {
public:
    /** @p watch sees the line of the session. */
    Writing(Session& session, WriteWatch& watch) : session_(session), watch_(watch) {}

    /** @p changes and @p tags are of the same variables, in the same order. */
    void run(std::vector<Change>& changes, std::span<Tag const> tags);

    /** Why it stopped early: the user, or a failed port. */
    [[nodiscard]] std::optional<CommandError> const& end() const { return end_; }

private:
    /** A result as exit code and as text for the user. */
    struct Judgement {
        ExitCode code = ExitCode::Good;
        base::Failure failure{}; ///< its text can be shown
        std::string advice{};    ///< the likely cause
    };

    void write(std::vector<Change>& changes);
    void writeList(std::vector<Change>& changes, std::span<std::size_t const> items);
    void readBack(std::vector<Change>& changes, std::span<Tag const> tags);
    void noteReplacedPrograms(std::vector<Change>& changes);
    Judgement judge(host::TagResult const& result);

    Session& session_;
    WriteWatch& watch_;
    std::optional<CommandError> end_;
};

} // namespace velk
