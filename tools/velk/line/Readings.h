#pragma once

#include "host/values/TagReader.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/line/Tag.h"
#include "tools/velk/line/TagRequest.h"

#include <chrono>
#include <span>
#include <string>
#include <vector>

namespace velk {

struct Context;

/** The result of one tag, and its time. */
struct Reading {
    Tag const* tag = nullptr;
    host::TagResult result;
    std::chrono::system_clock::time_point at;
};

/** The requests for the words of a command line; without words, all tags of the project file. */
std::vector<TagRequest> parseRequests(std::vector<std::string> const& words, Settings const& settings);

/**
 * The tags of all requests, in their order.
 *
 * A station that does not answer is reported once, and its tags have that failure; so has a tag that cannot be created.
 * Throws CommandError when the port has failed or the user asks to stop.
 */
std::vector<Tag> createAllTags(Session& session, std::span<TagRequest const> requests, Context& context);

/** Whether the line can no longer be used: the port has failed, or the user asks to stop. */
bool endsEverything(ExitCode code);

/** Reads tags, station by station. When the port fails or the user asks to stop, the rest has no value. */
std::vector<Reading> readWhileItWorks(Session& session, std::span<Tag const> tags);

/** The same for all tags. Throws CommandError when the port fails or the user asks to stop. */
std::vector<Reading> readAll(Session& session, std::span<Tag const> tags);

/** "good", "missing" or "failed". */
std::string statusWord(Reading const& reading);

/** Why a reading is not good; empty for a good one. */
std::string reasonText(Reading const& reading);

enum class OutputFormat { Table, Json, Csv };

/** How readings are shown. */
struct ReadingStyle {
    bool stations = false;     ///< with the stations
    std::size_t longest = 200; ///< characters of a value in a table
};

std::string readingsText(std::span<Reading const> readings, OutputFormat format, ReadingStyle const& style);

/** "2024-05-31T12:34:56.789Z". */
std::string utcText(std::chrono::system_clock::time_point time);

} // namespace velk
