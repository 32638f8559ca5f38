#include "tools/velk/commands/ReadCommand.h"

#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/commands/flags/OutputFlags.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/terminal/Terminal.h"

#include <algorithm>
#include <memory>

namespace velk {
namespace {

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

} // namespace

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

void addReadCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("read", "Read variables once and show their values");
    auto const options = std::make_shared<ReadOptions>();
    command
        ->add_option("names", options->names,
                     "Variables as [STATION:]NAME[:TYPE[(CONVERSIONS)]]; NAME is a tag of the project file, a variable "
                     "of the PLC, or a pattern with * and ?. Without one: all tags of the project file")
        ->type_name("NAME");
    addFormatOptions(*command, options->format);
    addLineOptions(*command, context);
    command->callback(
        [options, &context] { context.action = [options, &context] { return runRead(*options, context); }; });
}

} // namespace velk
