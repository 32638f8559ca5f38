#include "tools/velk/commands/watch/WatchCommand.h"

#include "base/Signals.h"
#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/commands/watch/LineFigures.h"
#include "tools/velk/commands/watch/RoundText.h"
#include "tools/velk/commands/watch/StationPacing.h"
#include "tools/velk/commands/watch/ValueFile.h"
#include "tools/velk/commands/watch/WatchList.h"
#include "tools/velk/commands/watch/WatchTable.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Readings.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/terminal/LiveScreen.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Interval.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>

namespace velk {
namespace {

struct WatchOptions {
    std::vector<std::string> names;
    std::int64_t everyMicroseconds = 500'000;
    std::uint64_t count = 0; ///< rounds; 0: until the user asks to stop
    bool json = false;
    std::string csvFile; ///< empty for none
};

constexpr std::int64_t kReopenPause = 1'000'000;
constexpr std::int64_t kRedrawPause = 1'000'000; // ages grow, and windows change, between rounds
constexpr double kMicrosecondsPerMillisecond = 1'000;

/** Frames on the same terminal would be overwritten by the table. */
bool wantsTable(WatchOptions const& options, Context const& context) {
    StreamKinds const& kinds = context.terminal.kinds();
    bool const amongFrames = context.tracesToError && kinds.errorIsTerminal;
    return kinds.outputIsTerminal && kinds.canRedraw && !options.json && !amongFrames;
}

/** One run of the command. */
class Watch {
public:
    Watch(WatchOptions const& options, Context& context)
        : options_(options), context_(context), settings_(readSettings(context)),
          list_(parseRequests(options.names, settings_)), several_(list_.nodes().size() > 1),
          figures_(settings_.config.baudrate, bitsPerByte(settings_.config.parity, settings_.config.stopbits),
                   base::Signals::stoppedMicroseconds),
          attachment_(context.observers, figures_), live_(wantsTable(options, context)) {}

    ExitCode run();

private:
    [[nodiscard]] std::unique_ptr<Session> makeSession();
    [[nodiscard]] std::int64_t runningTime() const;
    [[nodiscard]] bool isOver() const;
    bool wait();
    void step();
    bool openLine();
    void awayRound();
    void round();
    void askStation(int node);
    void judge(int node, bool answered);
    void complainOnce(Reading const& reading);
    void stationFailed(int node, base::Failure const& failure);
    void lineDied(base::Failure const& failure);
    void failAll();
    [[nodiscard]] std::string troubleText() const;
    void show();
    [[nodiscard]] ScreenSize screenSize() const;
    void redraw();
    void noteSuspension();
    void showLive();
    [[nodiscard]] ExitCode outcome() const;

    WatchOptions const& options_;
    Context& context_;
    Settings settings_;
    WatchList list_;
    bool several_; ///< stations
    LineFigures figures_;
    Attachment attachment_;
    bool live_;

    std::unique_ptr<Session> session_; ///< null while the port is away
    base::Failure away_;               ///< why
    std::set<int> heard_;              ///< stations with a result in this round
    StationPacing pacing_;
    std::map<int, std::string> troubles_; ///< what is wrong with stations now, by node
    std::set<std::string> complaints_;    ///< about variables
    WatchTable table_;
    WatchHeader header_;
    LiveScreen screen_;
    std::optional<ValueFile> file_;
    std::int64_t startedAt_ = 0;   ///< of runningTime()
    std::int64_t nextAt_ = 0;      ///< start of the next round
    std::int64_t stoppedTime_ = 0; ///< before the table was shown
    ExitCode worst_ = ExitCode::Good;
};

ExitCode Watch::run() {
    echoSettings(settings_, context_);
    if (!options_.csvFile.empty()) {
        file_.emplace(options_.csvFile);
    }
    startedAt_ = runningTime();
    // The first opening must succeed: a wrong port name must not be treated as an unplugged adapter.
    session_ = makeSession();
    session_->require(session_->open());
    nextAt_ = context_.clock.microseconds();
    do {
        step();
    } while (!isOver() && wait());
    double const elapsed = static_cast<double>(runningTime() - startedAt_) / kMicrosecondsPerMillisecond;
    context_.terminal.setQuiet(false); // the statistics are always printed
    context_.terminal.note(summaryText(figures_.summary(), elapsed));
    return outcome();
}

/** Upload progress is removed when done: permanent lines would move the table. */
std::unique_ptr<Session> Watch::makeSession() {
    return std::make_unique<Session>(settings_, context_, UploadStyle{.vanishes = live_});
}

/** Time in which the program was not stopped. */
std::int64_t Watch::runningTime() const {
    return context_.clock.microseconds() - base::Signals::stoppedMicroseconds();
}

bool Watch::isOver() const {
    return context_.interrupt.requested() || (options_.count != 0 && header_.rounds >= options_.count);
}

ExitCode Watch::outcome() const {
    return context_.interrupt.requested() ? ExitCode::Interrupted : worst_;
}

/** Waits for the next round or for something else to do. False when the user asks to stop. */
bool Watch::wait() {
    std::int64_t pause = nextAt_ - context_.clock.microseconds();
    if (session_ == nullptr) {
        pause = std::min(pause, kReopenPause);
    }
    return context_.interrupt.pause(live_ ? std::min(pause, kRedrawPause) : pause);
}

/** A round, if one is due. */
void Watch::step() {
    if (session_ == nullptr && openLine()) {
        nextAt_ = context_.clock.microseconds();
    }
    if (context_.clock.microseconds() < nextAt_) {
        return redraw();
    }
    if (session_ != nullptr) {
        round();
    } else {
        awayRound();
    }
    std::int64_t const pause = std::max(options_.everyMicroseconds, session_ == nullptr ? kReopenPause : 0);
    nextAt_ = std::max(nextAt_ + pause, context_.clock.microseconds());
}

/** Tries the port again after a failure; false while it is away. */
bool Watch::openLine() {
    auto session = makeSession();
    base::Outcome const opened = session->open();
    if (!opened.ok()) {
        away_ = session->explained(opened.failure());
        header_.trouble = "trying again: " + away_.text;
        return false;
    }
    session_ = std::move(session);
    header_.trouble.clear();
    if (live_) {
        noteSuspension();
        context_.terminal.out(screen_.erase(screenSize()));
    }
    context_.terminal.error("the port is back"); // the line stays above the table
    redraw();
    return true;
}

/** A round without a port, in which every station fails. */
void Watch::awayRound() {
    ++header_.rounds;
    header_.roundMs = 0;
    header_.floorMs = 0;
    worst_ = worse(worst_, ExitCode::Port);
    failAll();
    show();
}

void Watch::failAll() {
    heard_ = list_.nodes();
    for (int const node : heard_) {
        list_.fail(node, settings_, away_);
    }
}

void Watch::round() {
    std::int64_t const began = runningTime();
    double const busyBefore = figures_.busyMs();
    heard_.clear();
    for (int const node : list_.nodes()) {
        if (session_ != nullptr && pacing_.isDue(node, context_.clock.microseconds())) {
            askStation(node);
        }
    }
    if (context_.interrupt.requested()) {
        return; // an interrupted exchange says nothing about the PLC
    }
    if (heard_.empty()) { // no station is due
        return redraw();
    }
    ++header_.rounds;
    header_.roundMs = static_cast<double>(runningTime() - began) / kMicrosecondsPerMillisecond;
    header_.floorMs = figures_.busyMs() - busyBefore;
    header_.failures = figures_.failureCount();
    show();
}

void Watch::askStation(int node) {
    base::Outcome const answered = list_.read(*session_, node);
    if (context_.interrupt.requested()) {
        return;
    }
    heard_.insert(node);
    judge(node, answered.ok());
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

void Watch::judge(int node, bool answered) {
    for (Reading const& reading : list_.readings({node})) {
        worst_ = worse(worst_, session_->exitCode(reading.result));
        if (answered && !reading.result.good) {
            std::string const status = statusWord(reading);
            figures_.countBadValue(status == "missing" ? status : reasonText(reading));
            complainOnce(reading);
        }
    }
}

/** About variables that the user has named and the PLC or the driver does not know. */
void Watch::complainOnce(Reading const& reading) {
    bool const isOfTheUser = reading.tag->tag == nullptr || statusWord(reading) == "missing";
    bool const tableStands = live_ && header_.rounds > 0; // the reason is shown below it
    std::string const text = lineName(*reading.tag, several_) + ": " + displayable(reasonText(reading));
    if (isOfTheUser && !tableStands && complaints_.insert(text).second) {
        context_.terminal.complain(text);
    }
}

void Watch::stationFailed(int node, base::Failure const& failure) {
    base::Failure const cause = session_->explained(failure);
    figures_.countFailure(cause.text);
    bool const isNew = troubles_.insert_or_assign(node, cause.text).second;
    header_.trouble = troubleText();
    if (!live_ && isNew) {
        context_.terminal.complain("station " + settings_.stationName(node) + ": " + session_->error(failure).what());
    }
    switch (exitCodeFor(cause.kind)) {
    case ExitCode::Port:
        return lineDied(cause);
    case ExitCode::Silent:
        return pacing_.failed(node, context_.clock.microseconds());
    default:
        return; // a PLC that refuses costs no time and may be asked again at once
    }
}

void Watch::lineDied(base::Failure const& failure) {
    list_.forgetTags();
    session_.reset();
    pacing_ = {};
    troubles_.clear();
    away_ = failure;
    failAll();
    header_.trouble = "waiting for the port to come back: " + failure.text;
    if (!live_) {
        context_.terminal.note(header_.trouble);
    }
}

void Watch::show() {
    std::vector<Reading> const news = list_.readings(heard_);
    if (file_) {
        file_->append(news);
    }
    if (options_.json) {
        return context_.terminal.out(roundJson(header_, std::chrono::system_clock::now(), news));
    }
    if (!live_) {
        return context_.terminal.out(roundLines(news, several_));
    }
    table_.update(list_.readings());
    showLive();
}

/** Redraws the table with current ages, troubles and window size. */
void Watch::redraw() {
    if (live_) {
        showLive();
    }
}

ScreenSize Watch::screenSize() const {
    return {static_cast<std::size_t>(context_.terminal.width()), static_cast<std::size_t>(context_.terminal.height())};
}

void Watch::noteSuspension() {
    if (std::int64_t const stopped = base::Signals::stoppedMicroseconds(); stopped != stoppedTime_) {
        screen_.spoil(); // the shell has printed
        stoppedTime_ = stopped;
    }
}

void Watch::showLive() {
    noteSuspension();
    ScreenSize const size = screenSize();
    std::size_t const height = std::max<std::size_t>(size.rows, 2) - 1; // the cursor is in the last line
    // Some terminals erase the last column together with the rest of a full line.
    std::size_t const width = std::max<std::size_t>(size.columns, 2) - 1;
    context_.terminal.out(screen_.redraw(
        table_.lines(header_, std::chrono::system_clock::now(), width, height, context_.terminal), size));
}

ExitCode runWatch(WatchOptions const& options, Context& context) {
    return Watch(options, context).run();
}

} // namespace

Command watchCommand(Context& context) {
    auto const options = std::make_shared<WatchOptions>();
    auto const rounds = [](std::string const& text) {
        auto const number = wholeNumber<std::uint64_t>(text);
        return number == std::uint64_t{0} ? std::nullopt : number;
    };
    return {
        .name = "watch",
        .description = "Read variables repeatedly and show how they change",
        .words = {word("NAME", Offer::Variables, "Variables, as for read; without one: all tags of the project file",
                       into(options->names), {.repeats = true})},
        .flags = withLineFlags(
            {flag("--every", "INTERVAL", "Time from round to round, such as 500ms (the default), 2s or 1min",
                  parsed(options->everyMicroseconds, parseInterval, "is not an interval such as 500ms, 2s or 1min")),
             flag("--count", "N", "End after this number of rounds; rounds without a due station do not count",
                  parsed(options->count, rounds, "is not a number of rounds (1 or more)")),
             flag("--json", {}, "One JSON object a round, each on its line", into(options->json)),
             flag("--csv", {"FILE", Offer::Files},
                  "Append the values to this file as well, with the reasons of those that are not good",
                  into(options->csvFile))},
            context),
        .action = [options, &context] { return runWatch(*options, context); }};
}

} // namespace velk
