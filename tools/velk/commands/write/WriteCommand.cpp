#include "tools/velk/commands/write/WriteCommand.h"

#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/commands/write/Change.h"
#include "tools/velk/commands/write/StationNaming.h"
#include "tools/velk/commands/write/WritePreview.h"
#include "tools/velk/commands/write/WriteResult.h"
#include "tools/velk/commands/write/WriteWatch.h"
#include "tools/velk/commands/write/Writing.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Readings.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Names.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <utility>

namespace velk {
namespace {

struct WriteOptions {
    std::vector<std::string> assignments; ///< NAME=VALUE
    bool yes = false;
    bool json = false;
};

std::vector<Assignment> parseAssignments(std::vector<std::string> const& words) {
    std::vector<Assignment> assignments;
    std::transform(words.begin(), words.end(), std::back_inserter(assignments),
                   [](std::string const& word) { return parseAssignment(word); });
    return assignments;
}

std::vector<TagRequest> requestsOf(std::vector<Assignment> const& assignments, Settings const& settings) {
    std::vector<TagRequest> requests;
    std::set<std::pair<int, std::string>> known;
    for (Assignment const& each : assignments) {
        TagRequest request = parseTagRequest(each.name, settings);
        // An element of an array looks like a pattern; as a name it is looked up, and may exist.
        request.isPattern = false;
        if (request.variable.find_first_of("*?") != std::string::npos) {
            throw CommandError(ExitCode::Usage, "'" + each.name + "': only single variables can be written");
        }
        if (!known.emplace(request.node, upperCase(request.variable)).second) {
            throw CommandError(ExitCode::Usage, "'" + each.name + "' is to be written twice");
        }
        requests.push_back(std::move(request));
    }
    return requests;
}

void requireSomebodyToAsk(WriteOptions const& options, Terminal const& terminal) {
    if (!options.yes && !terminal.kinds().inputIsTerminal) {
        throw CommandError(ExitCode::Usage, "no terminal for questions: give --yes to write without a question");
    }
}

/** After a change of program the values would be written to other variables, as other types. */
void requireSamePrograms(Session& session, std::span<Tag const> tags, StationNaming const& naming) {
    for (Tag const& tag : tags) {
        if (session.isProgramReplaced(tag.node)) {
            throw CommandError(ExitCode::ItemNotGood, "the program of " + naming.place(tag) +
                                                          " was replaced: nothing was written; run the command again");
        }
    }
}

/** Tags whose type was given needed no symbols so far; from now on a change of them is noticed. */
void rememberPrograms(Session& session, std::span<Tag const> tags) {
    std::set<int> known;
    for (Tag const& tag : tags) {
        if (known.insert(tag.node).second) {
            static_cast<void>(session.storedSymbols(tag.node));
        }
    }
}

/** The changes as given on the command line. */
struct Job {
    WriteOptions const& options;
    std::vector<Assignment> assignments;
    std::vector<TagRequest> requests;
    StationNaming naming;
};

/** The changes with the tags of the PLCs. */
struct Plan {
    std::vector<Tag> tags;
    std::vector<Change> changes; ///< of the tags, in their order
};

Plan makePlan(Job const& job, Session& session, Context& context) {
    Plan plan;
    plan.tags = createAllTags(session, job.requests, context);
    std::vector<Reading> const before = readAll(session, plan.tags);
    requireSamePrograms(session, plan.tags, job.naming);
    requireWritable(before, job.naming, session, context.terminal);
    rememberPrograms(session, plan.tags);
    std::vector<std::string> values;
    std::transform(job.assignments.begin(), job.assignments.end(), std::back_inserter(values),
                   [](Assignment const& each) { return each.value; });
    plan.changes = parseChanges(before, values, job.naming, context.terminal);
    return plan;
}

void requireYes(Plan const& plan, Job const& job, Session& session, Context& context) {
    std::optional<std::string> const answer = context.terminal.ask(
        previewText(plan.changes, job.naming) + questionText(plan.tags, job.naming), context.interrupt);
    if (!answer || !(sameName(*answer, "y") || sameName(*answer, "yes"))) {
        throw CommandError(ExitCode::ItemNotGood, kNothingWritten);
    }
    requireSamePrograms(session, plan.tags, job.naming);
}

/** A failure before anything is written must say so, and so must an interruption. */
[[noreturn]] void endBeforeWriting(CommandError const& error, Terminal& terminal) {
    if (error.code() == ExitCode::Interrupted) {
        terminal.complain(kNothingWritten); // an interruption has no other message
        throw error;
    }
    if (error.code() == ExitCode::Port) {
        throw CommandError(error.code(), std::string(error.what()) + ": " + kNothingWritten);
    }
    throw error;
}

/** Starts a new line, so that the next output does not follow the ^C. */
void endEcho(ExitCode code, Terminal& terminal) {
    if (code == ExitCode::Interrupted && terminal.kinds().errorIsTerminal) {
        terminal.error("");
    }
}

/** Everything before the writing. */
Plan prepare(Job const& job, Session& session, Context& context) {
    bool asked = false;
    try {
        Plan plan = makePlan(job, session, context);
        tellOfPitfalls(plan.changes, job.naming, !job.options.yes, context.terminal);
        if (!job.options.yes) {
            asked = true;
            requireYes(plan, job, session, context);
        }
        return plan;
    } catch (CommandError const& error) {
        if (!asked) { // else the question has ended the line
            endEcho(error.code(), context.terminal);
        }
        endBeforeWriting(error, context.terminal);
    }
}

/** What was written, or may have been, is reported even after the line failed. */
ExitCode tell(std::span<Change const> changes, std::optional<CommandError> const& end, Job const& job,
              Terminal& terminal) {
    if (end) {
        endEcho(end->code(), terminal);
    }
    terminal.out(job.options.json ? resultJson(changes) : resultText(changes, job.naming));
    for (std::string const& complaint : complaintsOf(changes, job.naming)) {
        terminal.complain(complaint);
    }
    if (end) {
        throw CommandError(*end);
    }
    return exitCodeOf(changes);
}

ExitCode runWrite(WriteOptions const& options, Context& context) {
    std::vector<Assignment> assignments = parseAssignments(options.assignments);
    Settings const settings = readSettings(context);
    std::vector<TagRequest> requests = requestsOf(assignments, settings);
    requireSomebodyToAsk(options, context.terminal);
    StationNaming const naming(settings, requests);
    Job const job{options, std::move(assignments), std::move(requests), naming};
    echoSettings(settings, context);
    Session session(settings, context);
    session.require(session.open());
    Plan plan = prepare(job, session, context);
    WriteWatch watch;
    Attachment const attachment(context.observers, watch);
    Writing writing(session, watch);
    writing.run(plan.changes, plan.tags);
    return tell(plan.changes, writing.end(), job, context.terminal);
}

} // namespace

Assignment parseAssignment(std::string_view word) {
    std::size_t const equals = word.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        throw CommandError(ExitCode::Usage, "'" + std::string(word) + "': what to write is given as NAME=VALUE");
    }
    return {std::string(word.substr(0, equals)), std::string(word.substr(equals + 1))};
}

Command writeCommand(Context& context) {
    auto const options = std::make_shared<WriteOptions>();
    return {
        .name = "write",
        .description = "Show old values, write new ones, and read them back",
        .words = {word("NAME=VALUE", Offer::Variables,
                       "What to write, as [STATION:]NAME[:TYPE[(CONVERSIONS)]]=VALUE; arrays as [1, 2, 3], texts as "
                       "they are or in quotes, bytes as pairs of hexadecimal digits",
                       into(options->assignments), {.required = true, .repeats = true})},
        .flags = withLineFlags({flag("-y,--yes", {}, "Write without a question", into(options->yes)),
                                flag("--json", {}, "As JSON", into(options->json))},
                               context),
        .action = [options, &context] { return runWrite(*options, context); }};
}

} // namespace velk
