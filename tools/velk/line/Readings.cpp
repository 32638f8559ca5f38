#include "tools/velk/line/Readings.h"

#include "host/values/DatagramPlanner.h"
#include "interfaces/ITag.h"
#include "tools/common/TextTable.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/FailureJson.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Fitting.h"
#include "tools/velk/text/Text.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <set>

namespace velk {
namespace {

using Time = std::chrono::system_clock::time_point;

int millisecondsOf(Time time) {
    using std::chrono::milliseconds;
    constexpr int kPerSecond = 1000;
    auto const since = std::chrono::duration_cast<milliseconds>(time.time_since_epoch()).count();
    return static_cast<int>(since % kPerSecond);
}

/** "12:34:56.789", where the machine is. */
std::string localText(Time time) {
    return fmt::format("{:%H:%M:%S}.{:03}", fmt::localtime(std::chrono::system_clock::to_time_t(time)),
                       millisecondsOf(time));
}

TagRequest requestFor(NamedTag const& tag, Settings const& settings) {
    return parseTagRequest(tag.name, settings);
}

void throwWhenOver(Session const& session, base::Failure const& failure) {
    if (endsEverything(session.exitCode(failure))) {
        throw session.error(failure);
    }
}

std::string valueCell(Reading const& reading) {
    return reading.result.good ? reading.tag->text(reading.result.value) : "-";
}

std::string tableText(std::span<Reading const> readings, ReadingStyle const& style) {
    std::vector<std::string> header{"name", "type", "value", "status", "time"};
    if (style.stations) {
        header.insert(header.begin(), "station");
    }
    tools::TextTable table(header);
    constexpr std::size_t kWidestValue = 60; // a long one is not to push all others apart
    table.limitColumn(static_cast<std::size_t>(std::find(header.begin(), header.end(), "value") - header.begin()),
                      kWidestValue);
    for (Reading const& reading : readings) {
        std::string const reason = reasonText(reading);
        std::vector<std::string> row{displayable(reading.tag->name), displayable(reading.tag->typeText()),
                                     cutAtEnd(valueCell(reading), style.longest),
                                     statusWord(reading) + (reason.empty() ? "" : ": " + displayable(reason)),
                                     localText(reading.at)};
        if (style.stations) {
            row.insert(row.begin(), displayable(reading.tag->station));
        }
        table.add(row);
    }
    return table.text();
}

std::string csvText(std::span<Reading const> readings) {
    std::string text = "station,name,variable,type,value,status,reason,time\r\n";
    for (Reading const& reading : readings) {
        Tag const& tag = *reading.tag;
        std::string const value = reading.result.good ? tag.plainText(reading.result.value) : std::string();
        text += fmt::format("{},{},{},{},{},{},{},{}\r\n", csvField(toUtf8(tag.station)), csvField(toUtf8(tag.name)),
                            csvField(toUtf8(tag.variable)), csvField(toUtf8(tag.typeText())), csvField(value),
                            statusWord(reading), csvField(toUtf8(reasonText(reading))), utcText(reading.at));
    }
    return text;
}

std::string jsonText(std::span<Reading const> readings) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (Reading const& reading : readings) {
        Tag const& tag = *reading.tag;
        nlohmann::ordered_json one;
        one["station"] = toUtf8(tag.station);
        one["node"] = tag.node;
        one["name"] = toUtf8(tag.name);
        one["variable"] = toUtf8(tag.variable);
        one["type"] = toUtf8(tag.typeText());
        one["value"] = reading.result.good ? tag.json(reading.result.value) : nlohmann::json();
        one["status"] = statusWord(reading);
        if (!reading.result.good) {
            putFailure(one, reading.result.failure);
        }
        one["time"] = utcText(reading.at);
        list.push_back(std::move(one));
    }
    constexpr int kIndent = 2;
    return list.dump(kIndent) + "\n";
}

/** Reads the tags of one station. Answers whether the line can go on. */
bool readStation(Session& session, std::span<Tag const> tags, int node, std::vector<Reading>& readings) {
    std::vector<ITag*> wanted(tags.size(), nullptr);
    for (std::size_t i = 0; i < tags.size(); ++i) {
        wanted[i] = tags[i].node == node ? tags[i].tag : nullptr;
    }
    std::vector<host::TagResult> results =
        host::TagReader(session.panel().driver().protocol(), {.skipNodeAfterTimeout = true}).read(wanted);
    bool goesOn = true;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (wanted[i] == nullptr) {
            continue;
        }
        readings[i].result = std::move(results[i]);
        readings[i].at = std::chrono::system_clock::now();
        base::Failure& failure = readings[i].result.failure;
        if (!readings[i].result.good) {
            goesOn = goesOn && !endsEverything(session.exitCode(failure));
            failure = session.explained(failure);
        }
    }
    return goesOn;
}

} // namespace

bool endsEverything(ExitCode code) {
    return code == ExitCode::Port || code == ExitCode::Interrupted;
}

std::string utcText(Time time) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(time)),
                       millisecondsOf(time));
}

std::vector<TagRequest> parseRequests(std::vector<std::string> const& words, Settings const& settings) {
    std::vector<TagRequest> requests;
    for (std::string const& word : words) {
        requests.push_back(parseTagRequest(word, settings));
    }
    if (words.empty()) {
        for (NamedTag const& tag : settings.tags) {
            requests.push_back(requestFor(tag, settings));
        }
    }
    if (requests.empty()) {
        throw CommandError(ExitCode::Usage, "no variable is given, and the project file names none");
    }
    return requests;
}

std::vector<Tag> createAllTags(Session& session, std::span<TagRequest const> requests, Context& context) {
    std::vector<Tag> tags;
    std::map<int, base::Failure> silent; // stations that failed once are not asked again
    for (TagRequest const& request : requests) {
        auto const known = silent.find(request.node);
        base::Result<std::vector<Tag>> made =
            known != silent.end() ? base::Result<std::vector<Tag>>(known->second) : session.createTags(request);
        if (!made.ok()) {
            throwWhenOver(session, made.failure());
            if (silent.emplace(request.node, made.failure()).second) {
                context.terminal.complain("station " + session.settings().stationName(request.node) + ": " +
                                          session.error(made.failure()).what());
            }
            tags.push_back(missingTag(request, session.settings(), session.explained(made.failure())));
            continue;
        }
        std::move(made.value().begin(), made.value().end(), std::back_inserter(tags));
    }
    return tags;
}

std::vector<Reading> readWhileItWorks(Session& session, std::span<Tag const> tags) {
    std::vector<Reading> readings(tags.size());
    std::set<int> nodes;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        readings[i].tag = &tags[i];
        readings[i].result.failure = tags[i].failure;
        readings[i].at = std::chrono::system_clock::now();
        nodes.insert(tags[i].node);
    }
    for (int const node : nodes) {
        if (!readStation(session, tags, node, readings)) {
            break;
        }
    }
    return readings;
}

std::vector<Reading> readAll(Session& session, std::span<Tag const> tags) {
    std::vector<Reading> readings = readWhileItWorks(session, tags);
    for (Reading const& reading : readings) {
        if (!reading.result.good && reading.tag->tag != nullptr) {
            throwWhenOver(session, reading.result.failure);
        }
    }
    return readings;
}

std::string statusWord(Reading const& reading) {
    bool const missing = reading.result.failure.kind == base::FailureKind::Missing;
    return reading.result.good ? "good" : missing ? "missing" : "failed";
}

std::string reasonText(Reading const& reading) {
    return reading.result.good ? std::string() : reading.result.failure.text;
}

std::string readingsText(std::span<Reading const> readings, OutputFormat format, ReadingStyle const& style) {
    switch (format) {
    case OutputFormat::Json:
        return jsonText(readings);
    case OutputFormat::Csv:
        return csvText(readings);
    case OutputFormat::Table:
        break;
    }
    return tableText(readings, style);
}

} // namespace velk
