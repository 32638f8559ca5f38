#include "tools/velk/commands/WatchCommand.h"

#include "tools/velk/CommandError.h"
#include "tools/velk/Context.h"
#include "tools/velk/Interrupt.h"
#include "tools/velk/Interval.h"
#include "tools/velk/Readings.h"
#include "tools/velk/Session.h"
#include "tools/velk/Terminal.h"
#include "tools/velk/Text.h"
#include "tools/velk/watch/LineFigures.h"
#include "tools/velk/watch/StationPacing.h"
#include "tools/velk/watch/WatchList.h"
#include "tools/velk/watch/WatchTable.h"

#include <fmt/format.h>

#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sys/ioctl.h>
#include <unistd.h>

namespace velk {
namespace {

constexpr std::int64_t kReopenPause = 1'000'000;
constexpr double kMicrosecondsPerMillisecond = 1'000;

std::size_t terminalHeight() {
    winsize size{};
    constexpr std::size_t kUsual = 24;
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 1 ? size.ws_row - 1U : kUsual;
}

/** One run of the command. */
class Watch {
public:
    Watch(WatchOptions const& options, Context& context)
        : options_(options), context_(context), settings_(readSettings(context)),
          list_(parseRequests(options.names, settings_)),
          figures_(settings_.config.baudrate, bitsPerByte(settings_.config.parity, settings_.config.stopbits)),
          attachment_(context.observers, figures_), live_(context.terminal.kinds().outputIsTerminal && !options.json) {}

    ExitCode run();

private:
    void openCsv();
    bool openLine();
    void awayRound();
    void round();
    void askStation(int node);
    void judge(int node);
    void stationFailed(int node, host::Failure const& failure);
    void lineDied(std::string const& reason);
    [[nodiscard]] std::string troubleText() const;
    void show();
    void showLive();
    void printPlain();
    void printJson();
    void appendCsv();
    [[nodiscard]] ExitCode outcome() const;

    WatchOptions const& options_;
    Context& context_;
    Settings settings_;
    WatchList list_;
    LineFigures figures_;
    Attachment attachment_;
    bool live_;

    std::unique_ptr<Session> session_; ///< null while the line is away
    std::vector<Reading> readings_;
    StationPacing pacing_;
    std::map<int, std::string> troubles_; ///< what is wrong with stations now, by node
    WatchTable table_;
    WatchHeader header_;
    std::ofstream csv_;
    std::size_t shownLines_ = 0;
    std::int64_t startedAt_ = 0;
    ExitCode worst_ = ExitCode::Good;
};

ExitCode Watch::run() {
    echoSettings(settings_, context_);
    openCsv();
    startedAt_ = context_.clock.microseconds();
    // The first opening has to succeed: a wrong name of a port is no adapter that comes back.
    session_ = std::make_unique<Session>(settings_, context_);
    session_->require(session_->open());
    std::int64_t next = context_.clock.microseconds();
    while (true) {
        if (session_ != nullptr || openLine()) {
            round();
        } else {
            awayRound();
        }
        bool const over = options_.count != 0 && header_.rounds >= options_.count;
        std::int64_t const now = context_.clock.microseconds();
        next = std::max(next + options_.everyMicroseconds, now);
        std::int64_t const pause = session_ != nullptr ? next - now : kReopenPause;
        if (over || context_.interrupt.requested() || !context_.interrupt.pause(pause)) {
            break;
        }
    }
    double const elapsed =
        static_cast<double>(context_.clock.microseconds() - startedAt_) / kMicrosecondsPerMillisecond;
    context_.terminal.setQuiet(false); // the figures are told always
    context_.terminal.note(summaryText(figures_.summary(), elapsed));
    return outcome();
}

ExitCode Watch::outcome() const {
    return context_.interrupt.requested() ? ExitCode::Interrupted : worst_;
}

void Watch::openCsv() {
    if (options_.csvFile.empty()) {
        return;
    }
    csv_.open(options_.csvFile, std::ios::app);
    if (!csv_) {
        throw CommandError(ExitCode::Usage, "cannot write " + options_.csvFile);
    }
    if (csv_.tellp() == 0) {
        csv_ << "time,station,name,value,status\r\n";
    }
}

/** Tries the port again after it died; false while it is away. */
bool Watch::openLine() {
    auto session = std::make_unique<Session>(settings_, context_);
    host::Outcome const opened = session->open();
    if (!opened.ok()) {
        header_.trouble = "trying again: " + opened.failure().text;
        return false;
    }
    session_ = std::move(session);
    header_.trouble.clear();
    context_.terminal.note("the port is back");
    shownLines_ = 0; // the table begins anew below the note
    return true;
}

/** A round in which nobody could be asked. */
void Watch::awayRound() {
    ++header_.rounds;
    worst_ = worse(worst_, ExitCode::Port);
    if (live_) {
        showLive();
    }
}

void Watch::round() {
    std::int64_t const began = context_.clock.microseconds();
    double const busyBefore = figures_.busyMs();
    for (int const node : list_.nodes()) {
        if (session_ != nullptr && pacing_.isDue(node, context_.clock.microseconds())) {
            askStation(node);
        }
    }
    if (context_.interrupt.requested()) {
        return; // what was cut off is no news of the PLC
    }
    ++header_.rounds;
    header_.roundMs = static_cast<double>(context_.clock.microseconds() - began) / kMicrosecondsPerMillisecond;
    header_.floorMs = figures_.busyMs() - busyBefore;
    header_.failures = figures_.failureCount();
    readings_ = list_.readings();
    table_.update(readings_);
    show();
}

void Watch::askStation(int node) {
    host::Outcome const answered = list_.read(*session_, node);
    if (context_.interrupt.requested()) {
        return;
    }
    judge(node);
    if (!answered.ok()) {
        return stationFailed(node, answered.failure());
    }
    pacing_.answered(node);
    troubles_.erase(node);
    header_.trouble = troubleText();
}

/** One station after the other. */
std::string Watch::troubleText() const {
    std::string text;
    for (auto const& [node, reason] : troubles_) {
        text += fmt::format("{}station {}: {}", text.empty() ? "" : "; ", settings_.stationName(node), reason);
    }
    return text;
}

void Watch::judge(int node) {
    for (Reading const& reading : list_.readings()) {
        if (reading.tag->node == node) {
            worst_ = worse(worst_, session_->exitCode(reading.result));
        }
    }
}

void Watch::stationFailed(int node, host::Failure const& failure) {
    std::string const reason = session_->describe(failure);
    figures_.countFailure(reason);
    bool const isNew = troubles_.insert_or_assign(node, reason).second;
    header_.trouble = troubleText();
    if (!live_ && isNew) {
        context_.terminal.complain("station " + settings_.stationName(node) + ": " + session_->error(failure).what());
    }
    switch (session_->exitCode(failure)) {
    case ExitCode::Port:
        return lineDied(reason);
    case ExitCode::Silent:
        return pacing_.failed(node, context_.clock.microseconds());
    default:
        return; // whoever refuses costs no time, and may be asked at once
    }
}

void Watch::lineDied(std::string const& reason) {
    list_.forgetTags();
    session_.reset();
    pacing_ = {};
    troubles_.clear();
    header_.trouble = "waiting for the port to come back: " + reason;
    if (!live_) {
        context_.terminal.note(header_.trouble);
    }
}

void Watch::show() {
    appendCsv();
    if (options_.json) {
        printJson();
    } else if (live_) {
        showLive();
    } else {
        printPlain();
    }
}

void Watch::showLive() {
    std::vector<std::string> const lines = table_.lines(
        header_, std::chrono::system_clock::now(), static_cast<std::size_t>(std::max(context_.terminal.width(), 1)),
        terminalHeight(), context_.terminal);
    std::string text = shownLines_ > 0 ? fmt::format("\x1B[{}A", shownLines_) : std::string();
    for (std::string const& line : lines) {
        text += line + "\x1B[K\n";
    }
    text += "\x1B[J"; // what a longer table left below
    shownLines_ = lines.size();
    context_.terminal.out(text);
}

void Watch::printPlain() {
    bool const several = list_.nodes().size() > 1;
    std::string text;
    for (Reading const& reading : readings_) {
        std::string const name = (several ? reading.tag->station + ":" : "") + reading.tag->name;
        text += fmt::format("{} {} {} {}\n", utcText(reading.at), displayable(name),
                            reading.result.good ? displayable(reading.tag->text(reading.result.value)) : "-",
                            statusWord(reading));
    }
    context_.terminal.out(text);
}

void Watch::printJson() {
    nlohmann::ordered_json round;
    round["time"] = utcText(std::chrono::system_clock::now());
    round["round"] = header_.rounds;
    round["round_ms"] = header_.roundMs;
    round["items"] = nlohmann::ordered_json::array();
    for (Reading const& reading : readings_) {
        nlohmann::ordered_json item;
        item["station"] = toUtf8(reading.tag->station);
        item["name"] = toUtf8(reading.tag->name);
        item["value"] = reading.result.good ? reading.tag->json(reading.result.value) : nlohmann::json();
        item["status"] = statusWord(reading);
        if (!reading.result.good) {
            item["reason"] = toUtf8(reasonText(reading));
        }
        round["items"].push_back(std::move(item));
    }
    context_.terminal.out(round.dump() + "\n");
}

void Watch::appendCsv() {
    if (!csv_.is_open()) {
        return;
    }
    for (Reading const& reading : readings_) {
        std::string const value = reading.result.good ? reading.tag->plainText(reading.result.value) : std::string();
        csv_ << fmt::format("{},{},{},{},{}\r\n", utcText(reading.at), csvField(toUtf8(reading.tag->station)),
                            csvField(toUtf8(reading.tag->name)), csvField(value), statusWord(reading));
    }
    csv_.flush();
    if (!csv_) {
        throw CommandError(ExitCode::Usage, "cannot write " + options_.csvFile);
    }
}

} // namespace

ExitCode runWatch(WatchOptions const& options, Context& context) {
    return Watch(options, context).run();
}

void addWatchCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("watch", "Read variables again and again and show how they change");
    auto const options = std::make_shared<WatchOptions>();
    command->add_option("names", options->names, "Variables, as for read; without one: all tags of the project file")
        ->type_name("NAME");
    command
        ->add_option_function<std::string>(
            "--every",
            [options](std::string const& text) {
                std::optional<std::int64_t> const interval = parseInterval(text);
                if (!interval) {
                    throw CLI::ValidationError("--every", "'" + text + "' is no interval such as 500ms, 2s or 1min");
                }
                options->everyMicroseconds = *interval;
            },
            "Time from round to round, such as 500ms (the default), 2s or 1min")
        ->type_name("INTERVAL");
    command->add_option("--count", options->count, "Ends after so many rounds")
        ->check(CLI::PositiveNumber)
        ->type_name("N");
    command->add_flag("--json", options->json, "One JSON object a round, each on its line");
    command->add_option("--csv", options->csvFile, "Appends the values to this file as well")->type_name("FILE");
    addLineOptions(*command, context);
    command->callback(
        [options, &context] { context.action = [options, &context] { return runWatch(*options, context); }; });
}

} // namespace velk
