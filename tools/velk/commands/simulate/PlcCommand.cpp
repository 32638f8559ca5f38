#include "tools/velk/commands/simulate/PlcCommand.h"

#include "base/Signals.h"
#include "plc/line/Line.h"
#include "plc/ports/FdServer.h"
#include "tools/velk/commands/simulate/EventPrinter.h"
#include "tools/velk/commands/simulate/EventQueue.h"
#include "tools/velk/commands/simulate/PlcOptions.h"
#include "tools/velk/commands/simulate/PlcPort.h"
#include "tools/velk/commands/simulate/PlcService.h"
#include "tools/velk/commands/simulate/SimulatedLine.h"
#include "tools/velk/commands/simulate/StreamWriter.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Interval.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <csignal>
#include <limits>
#include <memory>
#include <optional>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace velk {
namespace {

using simulation::EventPrinter;
using simulation::EventQueue;
using simulation::EventStyle;
using simulation::Happening;
using simulation::parseReplacement;
using simulation::parseSilence;
using simulation::parseTime;
using simulation::Plan;
using simulation::PlcPort;
using simulation::PlcService;
using simulation::StreamWriter;

/** Events that wait for a reader; further ones are dropped. */
constexpr std::size_t kMostWaitingBytes = 1'048'576;

/** For a slow or stopped reader at the end of the program. */
constexpr StreamWriter::Patience kPatience{.standstill = std::chrono::milliseconds(500),
                                           .altogether = std::chrono::seconds(10)};

EventStyle styleOf(PlcOptions const& options) {
    if (options.quiet) {
        return EventStyle::None;
    }
    return options.json ? EventStyle::Json : EventStyle::Text;
}

std::vector<std::string> stationNames(Plan const& plan) {
    std::vector<std::string> names;
    for (plc::StationDescription const& station : plan.line.stations) {
        names.push_back(station.name);
    }
    return names;
}

plc::WireLikeness wireLikeness(Plan const& plan, PlcPort const& port) {
    if (!port.isPseudoTerminal()) {
        return {};
    }
    return {.bytesPerSecond = plan.line.bytesPerSecond, .baud = plan.line.speed.baud};
}

EventQueue::LeftOut leftOut(EventStyle style) {
    return [style](std::size_t count, plc::Micros time) {
        return (style == EventStyle::Json ? simulation::leftOutJson(count, time)
                                          : simulation::leftOutText(count, time)) +
               "\n";
    };
}

/** Neither stream is waited for: a slow reader must not delay the PLC. */
struct Streams {
    StreamWriter output{STDOUT_FILENO};
    StreamWriter notes{STDERR_FILENO, StreamWriter::OnFailure::Forget};
};

void note(std::string const& line, Terminal const& terminal, Streams& streams) {
    if (!terminal.quiet()) {
        streams.notes.put(line + "\n");
    }
}

void announce(Plan const& plan, PlcPort const& port, PlcOptions const& options, Terminal const& terminal,
              Streams& streams) {
    for (std::string const& line : simulation::planText(plan, options)) {
        note(terminal.colouredError(Colour::Dim, line), terminal, streams);
    }
    note(fmt::format("Playing on {}. End it with Ctrl-C.", port.wayToIt()), terminal, streams);
    streams.notes.write();
    if (options.json) {
        streams.output.put(nlohmann::ordered_json{{"event", "port"}, {"name", port.name()}}.dump() + "\n");
    } else {
        streams.output.put(port.name() + "\n");
    }
    streams.output.write();
}

void carryOut(Happening const& happening, plc::Line& line) {
    plc::Station& station = line.station(happening.station);
    if (happening.kind == Happening::Kind::Restart) {
        station.restart();
    } else {
        station.replaceProgram(happening.program);
    }
}

/** Runs timed events and prints, until the user asks to stop, or the time or the service ends. */
class Play {
public:
    Play(Plan const& plan, PlcOptions const& options, Context& context, EventQueue& events, Streams& streams)
        : plan_(plan), context_(context), events_(events), streams_(streams), begun_(context.clock.microseconds()),
          end_(options.forMicroseconds > 0 ? options.forMicroseconds : kNever) {}

    void run(plc::FdServer& server, PlcService const& service) {
        while (wait(service) && !service.isOver()) {
            while (next_ < plan_.happenings.size() && plan_.happenings[next_].at.count() <= now()) {
                Happening const& happening = plan_.happenings[next_++];
                server.locked([&](plc::Line& line) { carryOut(happening, line); });
            }
            if (now() >= end_) {
                return;
            }
            print();
        }
    }

    [[nodiscard]] std::int64_t now() const { return context_.clock.microseconds() - begun_; }

private:
    static constexpr int kNoDescriptor = -1; // ignored by poll
    static constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

    /** Waits until there is something to do. False as soon as the user asks to stop. */
    bool wait(PlcService const& service) {
        constexpr std::int64_t kMicrosPerMilli = 1000;
        StreamWriter const& output = streams_.output;
        StreamWriter const& notes = streams_.notes;
        pollfd const printing =
            output.isPending() ? pollfd{output.descriptor(), POLLOUT, 0} : pollfd{events_.descriptor(), POLLIN, 0};
        pollfd const noting{notes.isPending() ? notes.descriptor() : kNoDescriptor, POLLOUT, 0};
        std::array<pollfd, 4> waiting{
            {{context_.interrupt.descriptor(), POLLIN, 0}, {service.endDescriptor(), POLLIN, 0}, printing, noting}};
        ::poll(waiting.data(), waiting.size(), static_cast<int>((untilNext() + kMicrosPerMilli - 1) / kMicrosPerMilli));
        return !context_.interrupt.requested();
    }

    /** Prints the rest of the last events first, so the queue is the only buffer. */
    void print() {
        if (!streams_.output.isPending()) {
            streams_.output.put(events_.take());
        }
        streams_.output.write();
        streams_.notes.write();
    }

    [[nodiscard]] std::int64_t untilNext() const {
        constexpr std::int64_t kLong = 3'600'000'000;
        std::int64_t next = now() + kLong;
        if (next_ < plan_.happenings.size()) {
            next = std::min<std::int64_t>(next, plan_.happenings[next_].at.count());
        }
        return std::max<std::int64_t>(0, std::min(next, end_) - now());
    }

    Plan const& plan_;
    Context& context_;
    EventQueue& events_;
    Streams& streams_;
    std::int64_t begun_;
    std::int64_t end_;
    std::size_t next_ = 0;
};

std::string endLine(plc::Line const& line, std::int64_t time, PlcOptions const& options) {
    plc::Micros const lasted(time);
    switch (styleOf(options)) {
    case EventStyle::Json:
        return simulation::endJson(line.counters(), lasted) + "\n";
    case EventStyle::Text:
        return simulation::endText(line.counters(), lasted) + "\n";
    case EventStyle::None:
        break;
    }
    return "";
}

/** A reader that has stopped reading must not keep the program running. */
void printRest(Streams& streams, Terminal const& terminal) {
    if (std::size_t const left = streams.output.finish(kPatience); left > 0) {
        note(fmt::format("Standard output was not read: {} omitted at the end.",
                         counted(left, "line was", "lines were")),
             terminal, streams);
    }
    streams.notes.finish(kPatience);
}

// ---- the flags

std::vector<Argument> portFlags(PlcOptions& options) {
    return {flag("--link", "PATH", "Make a symbolic link to the port as long as it runs", into(options.link)),
            flag("-p,--port", {"PORT", Offer::Ports}, "A real port, in place of a pseudo-terminal", into(options.port)),
            flag("-b,--baud", "BAUD",
                 "Line speed in bit/s; on a pseudo-terminal bytes take as long as on a real line, and a panel at "
                 "another speed sends and receives garbage",
                 into(options.baud)),
            flag("--parity", parities(), "Parity of the characters", into(options.parity)),
            flag("--stopbits", Range{1, kMostStopBits}, "Stop bits of the characters", into(options.stopBits)),
            flag("--mode", modes(), "Type of the line at a real port", into(options.mode))};
}

std::vector<Argument> stationFlags(PlcOptions& options) {
    return {flag("--framing", framings(), "Frames as they are, or routed through couplers", into(options.framing)),
            flag("--byte-order", byteOrders(), "Order of the bytes in a number", into(options.byteOrder)),
            flag("--block-size", Range{kLeastBlockSize, kMostBlockSize}, "Bytes of a block", into(options.blockSize))};
}

Take share(std::optional<double>& target) {
    return [&target](std::string const& text) {
        std::string fault = simulation::shareFault(text);
        target = fault.empty() ? simulation::parseShare(text) : target;
        return fault;
    };
}

std::vector<Argument> faultFlags(PlcOptions& options) {
    Rules const many{.repeats = true};
    return {
        flag("--drop", "SHARE", "Lose this share of frames, in either direction: 1%", share(options.drop)),
        flag("--flip", "SHARE", "Flip a bit in this share of frames from the PLC: 0.1%", share(options.flip)),
        flag("--silent", "WHEN", "Do not answer for 5 s every 60 s: 5s@60s; only once: 5s@60s/once; always",
             parsed(options.silent, parseSilence,
                    "is not written as 5s@60s (for 5 s, every 60 s), 5s@60s/once or always"),
             many),
        flag("--refuse-login", {}, "Refuse every login", into(options.refuseLogin)),
        flag("--bad-quality", "NAME", "Give this variable a bad quality", into(options.badQuality), many),
        flag("--replace-program", "TIME[:FILE]",
             "Run another program after this time: that of a file, or the same under another project identifier",
             parsed(options.replaceProgram, parseReplacement, "is not written as 30s or 30s:FILE"), many),
        flag("--restart", "TIME", "Switch the PLC off and on after this time",
             parsed(options.restart, parseTime, "is not a time such as 30s"), many),
        flag("--fault", "RULE",
             "Apply a fault rule, written as in a description: 'kind = \"late\", probability = 0.1, delay_ms = 500'",
             into(options.faults), many),
        flag("--only", "STATION", "Apply the faults to one station only", into(options.station)),
        flag("--seed", "NUMBER", "Use another random sequence", into(options.seed))};
}

std::vector<Argument> outputFlags(PlcOptions& options) {
    return {flag("--for", "TIME", "End after this time, such as 30s",
                 parsed(options.forMicroseconds, parseInterval, "is not a time such as 500ms, 2s or 1min")),
            flag("-q,--quiet", {}, "Print nothing but the name of the port", into(options.quiet)),
            flag("-v,--verbose", {}, "Print finished exchanges, too", into(options.verbose)),
            flag("--json", {}, "Print events as JSON lines", into(options.json))};
}

ExitCode runPlc(PlcOptions const& options, Context& context) {
    context.terminal.setQuiet(options.quiet);
    std::signal(SIGPIPE, SIG_IGN); // the link must be removed even when the reader goes away
    Plan const plan = simulation::makePlan(options);
    EventQueue events(kMostWaitingBytes, leftOut(styleOf(options)));
    EventPrinter printer(styleOf(options), options.verbose, stationNames(plan), events);
    plc::Line line(plan.line, &printer);
    Streams streams;
    PlcPort const port(options, plan.line.speed);
    announce(plan, port, options, context.terminal, streams);
    plc::FdServer server(line, port.descriptor(), wireLikeness(plan, port));
    PlcService service(server);
    service.start();
    Play play(plan, options, context, events, streams);
    play.run(server, service);
    plc::FdServer::End const end = service.finish();
    streams.output.put(events.take() + endLine(line, play.now(), options));
    printRest(streams, context.terminal);
    if (end == plc::FdServer::End::kPortGone) {
        throw CommandError(ExitCode::Port, "the port " + port.name() + " has gone away");
    }
    return ExitCode::Good;
}

} // namespace

Command plcCommand(Context& context) {
    auto const options = std::make_shared<PlcOptions>();
    Command command{
        .name = "plc",
        .description = "Simulate the PLCs of a line on a pseudo-terminal or a real port",
        .words = {word(
            "PROJECT", Offer::Files,
            "Description of a line with its stations, or of one program, which is simulated with the defaults of "
            "the other commands: routed framing, big-endian, blocks of 128 bytes, 19200 bit/s",
            into(options->project), {.required = true})},
        .flags = outputFlags(*options),
        .action = [options, &context] { return runPlc(*options, context); }};
    appendFlags(command.flags, portFlags(*options), "Port");
    appendFlags(command.flags, stationFlags(*options), "Station settings that override the description");
    appendFlags(command.flags, faultFlags(*options), "Misbehaviour");
    return command;
}

} // namespace velk
