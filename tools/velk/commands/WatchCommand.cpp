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
#include "tools/velk/watch/WatchTable.h"

#include <fmt/format.h>

#include <fstream>
#include <memory>
#include <optional>
#include <set>
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
          requests_(parseRequests(options.names, settings_)),
          figures_(settings_.config.baudrate, bitsPerByte(settings_.config.parity, settings_.config.stopbits)),
          attachment_(context.observers, figures_), live_(context.terminal.kinds().outputIsTerminal && !options.json) {}

    ExitCode run();

private:
    void openCsv();
    bool openLine();
    void makeTags();
    void round();
    void readStation(int node);
    void lineDied(std::string const& reason);
    void show();
    void showLive();
    void printPlain();
    void printJson();
    void appendCsv();
    [[nodiscard]] ExitCode outcome() const;

    WatchOptions const& options_;
    Context& context_;
    Settings settings_;
    std::vector<TagRequest> requests_;
    LineFigures figures_;
    Attachment attachment_;
    bool live_;

    std::unique_ptr<Session> session_; ///< null while the line is away
    std::vector<Tag> tags_;
    std::vector<Reading> readings_;
    StationPacing pacing_;
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
    // The first opening has to succeed: a wrong name of a port is no adapter that comes back.
    session_ = std::make_unique<Session>(settings_, context_);
    session_->require(session_->open());
    makeTags();
    startedAt_ = context_.clock.microseconds();
    std::int64_t next = startedAt_;
    while (options_.count == 0 || header_.rounds < options_.count) {
        if (session_ != nullptr || openLine()) {
            round();
            show();
        }
        next += options_.everyMicroseconds;
        std::int64_t const now = context_.clock.microseconds();
        next = std::max(next, now);
        std::int64_t const pause = session_ != nullptr ? next - now : kReopenPause;
        if (context_.interrupt.requested() || (options_.count != 0 && header_.rounds >= options_.count) ||
            !context_.interrupt.pause(pause)) {
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
        header_.trouble = opened.failure().text + "; trying again";
        if (live_) {
            showLive();
        }
        return false;
    }
    session_ = std::move(session);
    header_.trouble.clear();
    context_.terminal.note("the port is back");
    shownLines_ = 0; // the table begins anew below the note
    try {
        makeTags();
    } catch (CommandError const& error) {
        lineDied(error.what());
        return false;
    }
    return true;
}

void Watch::makeTags() {
    tags_ = createAllTags(*session_, requests_, context_);
    readings_.assign(tags_.size(), {});
    for (std::size_t i = 0; i < tags_.size(); ++i) {
        readings_[i].tag = &tags_[i];
        readings_[i].result.failure = tags_[i].failure;
    }
}

void Watch::round() {
    std::int64_t const began = context_.clock.microseconds();
    double const busyBefore = figures_.busyMs();
    std::set<int> nodes;
    for (Tag const& tag : tags_) {
        nodes.insert(tag.node);
    }
    for (int const node : nodes) {
        if (session_ != nullptr && pacing_.isDue(node, context_.clock.microseconds())) {
            readStation(node);
        }
    }
    ++header_.rounds;
    header_.roundMs = static_cast<double>(context_.clock.microseconds() - began) / kMicrosecondsPerMillisecond;
    header_.floorMs = figures_.busyMs() - busyBefore;
    header_.failures = figures_.failureCount();
    table_.update(readings_);
}

void Watch::readStation(int node) {
    std::vector<Tag> wanted;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < tags_.size(); ++i) {
        if (tags_[i].node == node) {
            wanted.push_back(tags_[i]);
            places.push_back(i);
        }
    }
    std::vector<host::TagResult> results = session_->read(wanted, {.skipNodeAfterTimeout = true});
    std::string failure;
    ExitCode code = ExitCode::Good;
    for (std::size_t i = 0; i < results.size(); ++i) {
        ExitCode const one = session_->exitCode(results[i]);
        worst_ = worse(worst_, one);
        if (one != ExitCode::Good && one != ExitCode::ItemNotGood) {
            failure = results[i].failure.text;
            code = worse(code, one);
        }
        readings_[places[i]] = {&tags_[places[i]], std::move(results[i]), std::chrono::system_clock::now()};
    }
    if (code == ExitCode::Good) {
        pacing_.answered(node);
        header_.trouble.clear();
        return;
    }
    if (code == ExitCode::Interrupted) {
        return;
    }
    figures_.countFailure(failure);
    pacing_.failed(node, context_.clock.microseconds());
    header_.trouble = "station " + settings_.stationName(node) + ": " + failure;
    if (code == ExitCode::Port) {
        lineDied(failure);
    }
}

void Watch::lineDied(std::string const& reason) {
    session_.reset();
    pacing_ = {};
    header_.trouble = reason + "; waiting for the port to come back";
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
        tags_, header_, std::chrono::system_clock::now(),
        static_cast<std::size_t>(std::max(context_.terminal.width(), 1)), terminalHeight(), context_.terminal);
    std::string text = shownLines_ > 0 ? fmt::format("\x1B[{}A", shownLines_) : std::string();
    for (std::string const& line : lines) {
        text += line + "\x1B[K\n";
    }
    text += "\x1B[J"; // what a longer table left below
    shownLines_ = lines.size();
    context_.terminal.out(text);
}

void Watch::printPlain() {
    std::string text;
    for (Reading const& reading : readings_) {
        text += fmt::format("{} {} {} {}\n", utcText(reading.at), displayable(reading.tag->name),
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
    command->add_option("--count", options->count, "Ends after so many rounds")->type_name("N");
    command->add_flag("--json", options->json, "One JSON object a round, each on its line");
    command->add_option("--csv", options->csvFile, "Appends the values to this file as well")->type_name("FILE");
    addLineOptions(*command, context);
    command->callback(
        [options, &context] { context.action = [options, &context] { return runWatch(*options, context); }; });
}

} // namespace velk
