#include "tools/velk/commands/PlcCommand.h"

#include "plc/FdServer.h"
#include "plc/Line.h"
#include "plc/LineFile.h"
#include "plc/PseudoTerminal.h"
#include "tools/velk/CommandError.h"
#include "tools/velk/Context.h"
#include "tools/velk/Interrupt.h"
#include "tools/velk/Terminal.h"
#include "tools/velk/commands/WatchCommand.h"

#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>

namespace velk {
namespace {

constexpr double kMicrosecondsPerSecond = 1e6;

/** Prints what the stations are asked, a line an event. */
class EventPrinter final : public plc::LineObserver {
public:
    EventPrinter(Terminal& terminal, bool quiet) : terminal_(terminal), quiet_(quiet) {}

    void onEvent(plc::LineEvent const& event) override {
        if (quiet_ || event.cause == plc::Cause::kExchangeDone) {
            return;
        }
        double const seconds = static_cast<double>(event.time.count()) / kMicrosecondsPerSecond;
        std::string const station = event.station == plc::kNoStation ? "-" : std::to_string(event.station);
        terminal_.out(fmt::format("{:10.3f} s  station {}  {}{}\n", seconds, station,
                                  plc::isComplaint(event.cause) ? "! " : "", event.text));
    }

private:
    Terminal& terminal_;
    bool quiet_;
};

/** A symbolic link that is gone when this object is. */
class TemporaryLink {
public:
    TemporaryLink(std::string const& target, std::string path) : path_(std::move(path)) {
        if (path_.empty()) {
            return;
        }
        std::error_code error;
        if (std::filesystem::is_symlink(path_, error)) {
            std::filesystem::remove(path_, error); // what an earlier run left behind
        }
        std::filesystem::create_symlink(target, path_, error);
        if (error) {
            throw CommandError(ExitCode::Usage, "cannot make the link " + path_ + ": " + error.message());
        }
    }
    ~TemporaryLink() {
        if (!path_.empty()) {
            std::error_code ignored;
            std::filesystem::remove(path_, ignored);
        }
    }
    TemporaryLink(TemporaryLink const&) = delete;
    TemporaryLink& operator=(TemporaryLink const&) = delete;

private:
    std::string path_;
};

plc::LineDescription readProject(std::string const& file) {
    try {
        return plc::readLineFile(file);
    } catch (std::exception const& problem) {
        throw CommandError(ExitCode::Usage, problem.what());
    }
}

/** Lets the stations work until the user wants the end or the time is over. */
void serve(plc::FdServer& server, PlcOptions const& options, Context& context) {
    std::jthread const thread([&server](std::stop_token const& stop) { server.run(stop); });
    if (options.forMicroseconds > 0) {
        context.interrupt.pause(options.forMicroseconds);
        return;
    }
    constexpr std::int64_t kLong = 3'600'000'000;
    while (context.interrupt.pause(kLong)) {
    }
}

} // namespace

ExitCode runPlc(PlcOptions const& options, Context& context) {
    context.terminal.setQuiet(options.quiet);
    EventPrinter printer(context.terminal, options.quiet);
    plc::Line line(readProject(options.project), &printer);
    plc::PseudoTerminal const terminal;
    TemporaryLink const link(terminal.slaveName(), options.link);
    context.terminal.note(fmt::format("{} station{} on {}{}", line.stationCount(), line.stationCount() == 1 ? "" : "s",
                                      terminal.slaveName(),
                                      options.link.empty() ? "" : ", linked from " + options.link));
    plc::FdServer server(line, terminal.master());
    serve(server, options, context);
    context.terminal.note(fmt::format("{} exchanges, {} lists read, {} lists written, {} complaints",
                                      line.counters().of(plc::Cause::kExchangeDone),
                                      line.counters().of(plc::Cause::kListRead),
                                      line.counters().of(plc::Cause::kListWritten), line.counters().complaints()));
    return ExitCode::Good;
}

void addPlcCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("plc", "Play the PLCs of a line on a pseudo-terminal");
    auto const options = std::make_shared<PlcOptions>();
    command->add_option("project", options->project, "Description of the line and its stations, a TOML file")
        ->type_name("PROJECT")
        ->required();
    command->add_option("--link", options->link, "Makes a symbolic link to the pseudo-terminal while it works")
        ->type_name("PATH");
    command
        ->add_option_function<std::string>(
            "--for",
            [options](std::string const& text) {
                std::optional<std::int64_t> const interval = parseInterval(text);
                if (!interval) {
                    throw CLI::ValidationError("--for", "'" + text + "' is no time such as 500ms, 2s or 1min");
                }
                options->forMicroseconds = *interval;
            },
            "Ends after this time, such as 30s")
        ->type_name("TIME");
    command->add_flag("-q,--quiet", options->quiet, "Prints no events");
    command->callback(
        [options, &context] { context.action = [options, &context] { return runPlc(*options, context); }; });
}

} // namespace velk
