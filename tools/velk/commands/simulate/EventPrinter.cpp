#include "tools/velk/commands/simulate/EventPrinter.h"

#include "tools/velk/text/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <utility>

namespace velk::simulation {
namespace {

using plc::Cause;
using Json = nlohmann::ordered_json;

constexpr double kMicrosPerSecond = 1e6;

double seconds(plc::Micros time) {
    return static_cast<double>(time.count()) / kMicrosPerSecond;
}

std::string stationName(int station, std::vector<std::string> const& names) {
    auto const position = static_cast<std::size_t>(station);
    return station == plc::kNoStation || position >= names.size() ? "-" : names[position];
}

/** The causes that are always in the line of counts; the others only when they occurred. */
constexpr std::array kAlwaysCounted{Cause::kExchangeDone, Cause::kListRead, Cause::kListWritten};

} // namespace

std::string eventText(plc::LineEvent const& event, std::vector<std::string> const& stations) {
    std::size_t longest = 1;
    for (std::string const& name : stations) {
        longest = std::max(longest, name.size());
    }
    std::string_view const cause = plc::nameOf(event.cause);
    std::string const more = event.text == cause ? "" : ": " + displayable(event.text);
    return fmt::format("{:12.3f}  {:<{}}  {}{}{}", seconds(event.time), stationName(event.station, stations), longest,
                       plc::isComplaint(event.cause) ? "! " : "", cause, more);
}

std::string eventJson(plc::LineEvent const& event, std::vector<std::string> const& stations) {
    Json json{{"time", seconds(event.time)}};
    if (event.station != plc::kNoStation) {
        json["station"] = stationName(event.station, stations);
    }
    json["event"] = plc::nameOf(event.cause);
    json["complaint"] = plc::isComplaint(event.cause);
    json["text"] = toUtf8(event.text);
    return json.dump();
}

std::string leftOutText(std::size_t count, plc::Micros time) {
    return fmt::format("{:12.3f}  left out: {} that nobody read in time", seconds(time),
                       counted(count, "event", "events"));
}

std::string leftOutJson(std::size_t count, plc::Micros time) {
    return Json{{"time", seconds(time)}, {"event", "left out"}, {"count", count}}.dump();
}

std::string endText(plc::EventCounters const& counters, plc::Micros time) {
    std::string text = fmt::format("{:12.3f}  end: {}, {}, {}", seconds(time),
                                   counted(counters.of(Cause::kExchangeDone), "exchange", "exchanges"),
                                   counted(counters.of(Cause::kListRead), "list read", "lists read"),
                                   counted(counters.of(Cause::kListWritten), "list written", "lists written"));
    for (std::size_t i = 0; i < plc::kCauseCount; ++i) {
        auto const cause = static_cast<Cause>(i);
        bool const named = std::find(kAlwaysCounted.begin(), kAlwaysCounted.end(), cause) != kAlwaysCounted.end();
        if (!named && counters.of(cause) != 0) {
            text += fmt::format(", {} x {}", counters.of(cause), plc::nameOf(cause));
        }
    }
    return text + fmt::format("; {}", counted(counters.complaints(), "complaint", "complaints"));
}

std::string endJson(plc::EventCounters const& counters, plc::Micros time) {
    Json counts = Json::object();
    for (std::size_t i = 0; i < plc::kCauseCount; ++i) {
        auto const cause = static_cast<Cause>(i);
        if (counters.of(cause) != 0) {
            counts[std::string(plc::nameOf(cause))] = counters.of(cause);
        }
    }
    return Json{{"time", seconds(time)}, {"event", "end"}, {"counts", counts}, {"complaints", counters.complaints()}}
        .dump();
}

EventPrinter::EventPrinter(EventStyle style, bool exchanges, std::vector<std::string> stations, EventQueue& queue)
    : style_(style), exchanges_(exchanges), stations_(std::move(stations)), queue_(queue) {}

void EventPrinter::onEvent(plc::LineEvent const& event) {
    if (style_ == EventStyle::None || (event.cause == Cause::kExchangeDone && !exchanges_)) {
        return;
    }
    queue_.put((style_ == EventStyle::Json ? eventJson(event, stations_) : eventText(event, stations_)) + "\n",
               event.time);
}

} // namespace velk::simulation
