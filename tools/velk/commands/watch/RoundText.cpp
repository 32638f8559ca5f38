#include "tools/velk/commands/watch/RoundText.h"

#include "tools/velk/line/FailureJson.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace velk {
namespace {

std::string valueAndStatus(Reading const& reading) {
    if (reading.result.good) {
        return displayable(reading.tag->text(reading.result.value)) + " " + statusWord(reading);
    }
    std::string const reason = reasonText(reading);
    return "- " + statusWord(reading) + (reason.empty() ? "" : ": " + displayable(reason));
}

nlohmann::ordered_json itemOf(Reading const& reading) {
    nlohmann::ordered_json item;
    item["station"] = toUtf8(reading.tag->station);
    item["name"] = toUtf8(reading.tag->name);
    item["value"] = reading.result.good ? reading.tag->json(reading.result.value) : nlohmann::json();
    item["status"] = statusWord(reading);
    if (!reading.result.good) {
        putFailure(item, reading.result.failure);
    }
    return item;
}

} // namespace

std::string lineName(Tag const& tag, bool stations) {
    return displayable((stations ? tag.station + ":" : "") + tag.name);
}

std::string roundLines(std::span<Reading const> readings, bool stations) {
    std::string text;
    for (Reading const& reading : readings) {
        text +=
            fmt::format("{} {} {}\n", utcText(reading.at), lineName(*reading.tag, stations), valueAndStatus(reading));
    }
    return text;
}

std::string roundJson(WatchHeader const& header, std::chrono::system_clock::time_point now,
                      std::span<Reading const> readings) {
    nlohmann::ordered_json round;
    round["time"] = utcText(now);
    round["round"] = header.rounds;
    round["round_ms"] = header.roundMs;
    round["items"] = nlohmann::ordered_json::array();
    for (Reading const& reading : readings) {
        round["items"].push_back(itemOf(reading));
    }
    return round.dump() + "\n";
}

} // namespace velk
