#include "tools/velk/commands/WriteCommand.h"

#include "interfaces/ITag.h"
#include "tools/common/TextTable.h"
#include "tools/velk/CommandError.h"
#include "tools/velk/Context.h"
#include "tools/velk/Names.h"
#include "tools/velk/Readings.h"
#include "tools/velk/Session.h"
#include "tools/velk/Terminal.h"
#include "tools/velk/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <set>

namespace velk {
namespace {

/** One value on its way to the PLC. */
struct Change {
    Tag const* tag = nullptr;
    host::ValueBytes wanted;
    Reading before;
    host::TagResult written;
    Reading after;

    /** The PLC took the write, and has the value. */
    [[nodiscard]] bool took() const {
        return written.good && after.result.good && tag->text(after.result.value) == tag->text(wanted);
    }
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
        // An element of an array looks like a pattern; as a name it is looked up, and may be there.
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
        throw CommandError(ExitCode::Usage, "there is no terminal to ask on: give --yes to write without a question");
    }
}

/** Nothing is written when anything cannot be. */
void requireAllGood(std::span<Reading const> readings, Session const& session, Terminal& terminal) {
    ExitCode worst = ExitCode::Good;
    for (Reading const& reading : readings) {
        if (!reading.result.good) {
            terminal.complain(displayable(reading.tag->name) + ": " + displayable(reasonText(reading)));
            worst = worse(worst, session.exitCode(reading.result));
        }
    }
    if (worst != ExitCode::Good) {
        throw CommandError(worst, "nothing was written");
    }
}

std::vector<Change> parseValues(std::span<Reading const> before, std::vector<Assignment> const& assignments,
                                Terminal& terminal) {
    std::vector<Change> changes;
    bool allGood = true;
    for (std::size_t i = 0; i < before.size(); ++i) {
        Tag const& tag = *before[i].tag;
        host::Result<host::ValueBytes> bytes = tag.parse(assignments[i].value);
        if (!bytes.ok()) {
            terminal.complain(displayable(tag.name) + ": " + bytes.failure().text);
            allGood = false;
            continue;
        }
        changes.push_back({&tag, std::move(bytes.value()), before[i], {}, {}});
    }
    if (!allGood) {
        throw CommandError(ExitCode::Usage, "nothing was written");
    }
    return changes;
}

std::string previewText(std::span<Change const> changes) {
    tools::TextTable table({"name", "type", "now", "to write"});
    for (Change const& change : changes) {
        table.add({displayable(change.tag->name), displayable(change.tag->typeText()),
                   change.tag->text(change.before.result.value), change.tag->text(change.wanted)});
    }
    return table.text();
}

/** The symbol file does not tell a BOOL that is a byte from one that is a bit among others. */
void tellOfWholeBytes(std::span<Tag const> tags, bool asking, Terminal& terminal) {
    for (Tag const& tag : tags) {
        if (tag.plcType == "BOOL") {
            std::string const name = displayable(tag.name);
            std::string const text = fmt::format("{0} is written as a whole byte; if it is a single bit, its "
                                                 "neighbours are lost: then write {0}:bit",
                                                 name);
            asking ? terminal.error(text) : terminal.note(text); // whoever is asked has to know
        }
    }
}

bool confirmed(Context& context, std::span<Change const> changes) {
    std::string const what = changes.size() == 1 ? "this value" : "these " + std::to_string(changes.size()) + " values";
    std::optional<std::string> const answer =
        context.terminal.ask(previewText(changes) + "Write " + what + " to the PLC? [y/N] ", context.interrupt);
    return answer && (sameName(*answer, "y") || sameName(*answer, "yes"));
}

void writeAll(std::vector<Change>& changes, Session& session) {
    std::vector<host::TagWrite> writes;
    writes.reserve(changes.size());
    for (Change const& change : changes) {
        writes.push_back({change.tag->tag, change.wanted});
    }
    std::vector<host::TagResult> results = host::TagReader(session.panel().driver().protocol()).write(writes);
    for (std::size_t i = 0; i < changes.size(); ++i) {
        changes[i].written = std::move(results[i]);
        if (!changes[i].written.good) {
            changes[i].written.failure.text = session.describe(changes[i].written.failure);
        }
    }
}

void readBack(std::vector<Change>& changes, Session& session, std::span<Tag const> tags) {
    std::vector<Reading> readings = readAll(session, tags);
    for (std::size_t i = 0; i < changes.size(); ++i) {
        changes[i].after = std::move(readings[i]);
    }
}

std::string outcomeText(Change const& change) {
    if (!change.written.good) {
        return "failed: " + change.written.failure.text;
    }
    if (!change.after.result.good) {
        return "written, but not read back: " + change.after.result.failure.text;
    }
    return change.took() ? "took" : "did not take, or the program has changed it since";
}

std::string valueAfter(Change const& change) {
    return change.after.result.good ? change.tag->text(change.after.result.value) : "-";
}

std::string tableText(std::span<Change const> changes) {
    tools::TextTable table({"name", "type", "before", "written", "after", "result"});
    for (Change const& change : changes) {
        Tag const& tag = *change.tag;
        table.add({displayable(tag.name), displayable(tag.typeText()), tag.text(change.before.result.value),
                   tag.text(change.wanted), valueAfter(change), displayable(outcomeText(change))});
    }
    return table.text();
}

std::string jsonText(std::span<Change const> changes) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (Change const& change : changes) {
        Tag const& tag = *change.tag;
        nlohmann::ordered_json one;
        one["station"] = toUtf8(tag.station);
        one["node"] = tag.node;
        one["name"] = toUtf8(tag.name);
        one["variable"] = toUtf8(tag.variable);
        one["type"] = toUtf8(tag.typeText());
        one["before"] = tag.json(change.before.result.value);
        one["written"] = tag.json(change.wanted);
        one["after"] = change.after.result.good ? tag.json(change.after.result.value) : nlohmann::json();
        one["took"] = change.took();
        one["result"] = toUtf8(outcomeText(change));
        list.push_back(std::move(one));
    }
    constexpr int kIndent = 2;
    return list.dump(kIndent) + "\n";
}

ExitCode exitCodeOf(std::span<Change const> changes, Session const& session) {
    std::vector<ExitCode> codes;
    for (Change const& change : changes) {
        ExitCode const line = worse(session.exitCode(change.written),
                                    change.written.good ? session.exitCode(change.after.result) : ExitCode::Good);
        codes.push_back(line == ExitCode::Good && !change.took() ? ExitCode::ItemNotGood : line);
    }
    return exitCodeOfItems(codes);
}

} // namespace

Assignment parseAssignment(std::string_view word) {
    std::size_t const equals = word.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        throw CommandError(ExitCode::Usage, "'" + std::string(word) + "': what to write is given as NAME=VALUE");
    }
    return {std::string(word.substr(0, equals)), std::string(word.substr(equals + 1))};
}

ExitCode runWrite(WriteOptions const& options, Context& context) {
    std::vector<Assignment> const assignments = parseAssignments(options.assignments);
    Settings const settings = readSettings(context);
    std::vector<TagRequest> const requests = requestsOf(assignments, settings);
    requireSomebodyToAsk(options, context.terminal);
    echoSettings(settings, context);
    Session session(settings, context);
    session.require(session.open());
    std::vector<Tag> const tags = createAllTags(session, requests, context);
    std::vector<Reading> const before = readAll(session, tags);
    requireAllGood(before, session, context.terminal);
    std::vector<Change> changes = parseValues(before, assignments, context.terminal);
    tellOfWholeBytes(tags, !options.yes, context.terminal);
    if (!options.yes && !confirmed(context, changes)) {
        throw CommandError(ExitCode::ItemNotGood, "nothing was written");
    }
    writeAll(changes, session);
    readBack(changes, session, tags);
    context.terminal.out(options.json ? jsonText(changes) : tableText(changes));
    return exitCodeOf(changes, session);
}

void addWriteCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("write", "Write values, after a look at the old ones, and read them back");
    auto const options = std::make_shared<WriteOptions>();
    command
        ->add_option("assignments", options->assignments,
                     "What to write, as [STATION:]NAME[:TYPE[(CONVERSIONS)]]=VALUE; arrays as [1, 2, 3], texts as they "
                     "are or in quotes, bytes as pairs of hexadecimal digits")
        ->type_name("NAME=VALUE")
        ->required();
    command->add_flag("-y,--yes", options->yes, "Write without a question");
    command->add_flag("--json", options->json, "As JSON");
    addLineOptions(*command, context);
    command->callback(
        [options, &context] { context.action = [options, &context] { return runWrite(*options, context); }; });
}

} // namespace velk
