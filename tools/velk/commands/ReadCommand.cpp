#include "tools/velk/commands/ReadCommand.h"

#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Readings.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/terminal/Terminal.h"

#include <algorithm>
#include <memory>

namespace velk {
namespace {

struct ReadOptions {
    std::vector<std::string> names;
    OutputFormat format = OutputFormat::Table;
};

ReadingStyle styleFor(std::span<Tag const> tags, Terminal const& terminal) {
    ReadingStyle style;
    style.stations = std::any_of(tags.begin(), tags.end(), [&](Tag const& tag) { return tag.node != tags[0].node; });
    constexpr std::size_t kLongestOnTerminal = 60;
    constexpr std::size_t kEndless = 1'000'000;
    style.longest = terminal.kinds().outputIsTerminal ? kLongestOnTerminal : kEndless;
    return style;
}

ExitCode exitCodeOf(std::span<Reading const> readings, Session const& session) {
    std::vector<ExitCode> codes;
    for (Reading const& reading : readings) {
        codes.push_back(session.exitCode(reading.result));
    }
    return exitCodeOfItems(codes);
}

ExitCode runRead(ReadOptions const& options, Context& context) {
    Settings const settings = readSettings(context);
    std::vector<TagRequest> const requests = parseRequests(options.names, settings);
    echoSettings(settings, context);
    Session session(settings, context);
    session.require(session.open());
    std::vector<Tag> const tags = createAllTags(session, requests, context);
    std::vector<Reading> const readings = readAll(session, tags);
    context.terminal.out(readingsText(readings, options.format, styleFor(tags, context.terminal)));
    return exitCodeOf(readings, session);
}

} // namespace

Command readCommand(Context& context) {
    auto const options = std::make_shared<ReadOptions>();
    auto const form = [&](char const* name, OutputFormat format, char const* description) {
        return flag(name, {}, description, choose(options->format, format), {.oneOf = "format"});
    };
    return {.name = "read",
            .description = "Read variables once and show their values",
            .words = {word("NAME", Offer::Variables,
                           "Variables as [STATION:]NAME[:TYPE[(CONVERSIONS)]]; NAME is a tag of the project file, a "
                           "variable of the PLC, or a pattern with * and ?. Without one: all tags of the project file",
                           into(options->names), {.repeats = true})},
            .flags = withLineFlags({form("--json", OutputFormat::Json, "As JSON"),
                                    form("--csv", OutputFormat::Csv, "As comma-separated values")},
                                   context),
            .action = [options, &context] { return runRead(*options, context); }};
}

} // namespace velk
